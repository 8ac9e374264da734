// XML documents, project files and lists against direct use of libxml2 for the same work. The files are in
// memory (/dev/shm), so flushing costs nothing on either side.
#include <benchmark/benchmark.h>
#include <libxml/parser.h>
#include <libxml/xmlsave.h>
#include <malloc.h>
#include <orx/frame/native_path.h>
#include <orx/projects/qpl_file.h>
#include <orx/projects/qpr_file.h>
#include <stdlib.h>
#include <strings.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>

// Replaces the function of the C library in this program.
extern "C" int fsync(int) { return 0; }

namespace {

namespace fs = std::filesystem;

const xmlChar* as_xml(const char* text) { return reinterpret_cast<const xmlChar*>(text); }
const xmlChar* as_xml(const std::string& text) { return as_xml(text.c_str()); }

struct Folder {
  Folder() { fs::create_directories(path / "Pit1"); }
  ~Folder() { fs::remove_all(path); }

  std::string suite(const char* name) const {
    char out[1024];
    orx_path_from_native((path / name).c_str(), out, sizeof out);
    return out;
  }

  const fs::path path = fs::path("/dev/shm") / ("orx_bench_" + std::to_string(getpid()));
};

Folder& folder() {
  static Folder instance;
  return instance;
}

template <class Visit>
void visit_elements(xmlNode* node, const char* name, Visit visit) {
  for (; node != nullptr; node = node->next) {
    if (node->type != XML_ELEMENT_NODE) continue;
    if (std::strcmp(reinterpret_cast<const char*>(node->name), name) == 0) visit(node);
    visit_elements(node->children, name, visit);
  }
}

std::string attribute(xmlNode* node, const char* name) {
  xmlChar* value = xmlGetProp(node, as_xml(name));
  std::string text = value != nullptr ? reinterpret_cast<const char*>(value) : "";
  xmlFree(value);
  return text;
}

xmlDoc* read_file(const fs::path& path) {
  return xmlReadFile(path.c_str(), nullptr, XML_PARSE_NONET | XML_PARSE_COMPACT);
}

// Saves as a careful program does: to a temporary file that then replaces the old file.
void save_and_free(xmlDoc* doc, const fs::path& path) {
  const std::string temporary = path.string() + ".tmp";
  xmlSaveFormatFileEnc(temporary.c_str(), doc, "UTF-8", 1);
  fs::rename(temporary, path);
  xmlFreeDoc(doc);
}

void fill(CQPRFile& file) {
  QPRInfo& info = *file.GetQPRInfo();
  std::strcpy(info.SiteName, "Northern Extension");
  std::strcpy(info.SiteDatabase, "NORTH_EXT");
  std::strcpy(info.SiteDatabaseServerName, "minesql01\\geology");
  std::strcpy(info.ProjectName, "Pit 1 Stage 4");
  std::strcpy(info.DataGroupName, "Grade Control");
  std::strcpy(info.Coordinates, "UTM 51S");
  std::strcpy(info.Description, "Grade control model of the fourth stage, benches 320 to 260");
  info.SiteDatabasePlatform = 13;
  file.InitProjectVersion();
  file.SetFileName(folder().suite("Pit1/pit1.qpr").c_str());
}

constexpr const char* kTextProperties[] = {
    "SiteName",    "SiteDatabase",  "SiteDatabasePlatform", "SiteDatabaseServerName",
    "ProjectName", "DataGroupName", "Coordinates",          "Description"};
constexpr const char* kVersions[] = {"MajorVersion", "MinorVersion", "ReleaseVersion"};

struct PlainProject {
  char texts[8][261];
  int versions[3];
};

void project_open_libxml2(benchmark::State& state) {
  CQPRFile file;
  fill(file);
  file.Save();
  for (auto _ : state) {
    PlainProject project{};
    xmlDoc* doc = read_file(folder().path / "Pit1/pit1.qpr");
    visit_elements(xmlDocGetRootElement(doc), "PROPERTY", [&](xmlNode* node) {
      const std::string name = attribute(node, "NAME");
      const std::string value = attribute(node, "VALUE");
      for (int i = 0; i < 8; ++i) {
        if (strcasecmp(name.c_str(), kTextProperties[i]) == 0)
          std::snprintf(project.texts[i], 261, "%s", value.c_str());
      }
      for (int i = 0; i < 3; ++i) {
        if (strcasecmp(name.c_str(), kVersions[i]) == 0) project.versions[i] = atoi(value.c_str());
      }
    });
    xmlFreeDoc(doc);
    benchmark::DoNotOptimize(project);
  }
}

void project_open_orx(benchmark::State& state) {
  CQPRFile file;
  fill(file);
  file.Save();
  for (auto _ : state) {
    CQPRFile fresh;
    fresh.SetFileName(file.GetFileName());
    if (!fresh.Load()) state.SkipWithError("not loaded");
  }
}

void project_save_libxml2(benchmark::State& state) {
  CQPRFile file;
  fill(file);
  const QPRInfo& info = *file.GetQPRInfo();
  const std::string version = std::to_string(info.MajorVersion);
  for (auto _ : state) {
    xmlDoc* doc = xmlNewDoc(as_xml("1.0"));
    xmlNode* root = xmlNewDocNode(doc, nullptr, as_xml("QPR"), nullptr);
    xmlDocSetRootElement(doc, root);
    xmlNode* project = xmlNewChild(root, nullptr, as_xml("PROJECT"), nullptr);
    const auto put = [project](const char* name, const char* value) {
      xmlNode* node = xmlNewChild(project, nullptr, as_xml("PROPERTY"), nullptr);
      xmlNewProp(node, as_xml("NAME"), as_xml(name));
      xmlNewProp(node, as_xml("VALUE"), as_xml(value));
    };
    put("SiteName", info.SiteName);
    put("SiteDatabase", info.SiteDatabase);
    put("SiteDatabasePlatform", "SQL2019");
    put("SiteDatabaseServerName", info.SiteDatabaseServerName);
    put("ProjectName", info.ProjectName);
    put("DataGroupName", info.DataGroupName);
    put("Coordinates", info.Coordinates);
    put("Description", info.Description);
    for (const char* name : kVersions) put(name, version.c_str());
    save_and_free(doc, folder().path / "Pit1/pit1.qpr");
  }
}

void project_save_orx(benchmark::State& state) {
  CQPRFile file;
  fill(file);
  for (auto _ : state) {
    if (!file.Save()) state.SkipWithError("not saved");
  }
}

using PlainList = std::map<std::string, std::string>;

// Calls `handle` with the names and paths of `count` invented projects.
template <class Handle>
void invent_projects(std::int64_t count, Handle handle) {
  for (std::int64_t i = 0; i < count; ++i) {
    const std::string name = "Project " + std::to_string(i);
    handle(name, "C:\\Projects\\" + name + "\\project.qpr");
  }
}

void fill(CQPLFile& list, std::int64_t count) {
  invent_projects(count, [&](const std::string& name, const std::string& path) {
    list.SetProject(name.c_str(), path.c_str());
  });
  list.SetDefaultProject("Project 7");
  list.SetFileName(folder().suite("list.qpl").c_str());
}

void list_load_libxml2(benchmark::State& state) {
  CQPLFile file;
  fill(file, state.range(0));
  file.Save();
  for (auto _ : state) {
    PlainList list;
    std::string default_project;
    xmlDoc* doc = read_file(folder().path / "list.qpl");
    visit_elements(xmlDocGetRootElement(doc), "PROJECT", [&](xmlNode* node) {
      std::string name = attribute(node, "NAME");
      if (strcasecmp(attribute(node, "DEFAULT").c_str(), "TRUE") == 0) default_project = name;
      list.emplace_hint(list.end(), std::move(name), attribute(node, "QPRPATH"));
    });
    xmlFreeDoc(doc);
    benchmark::DoNotOptimize(list);
  }
  state.SetComplexityN(state.range(0));
}

void list_load_orx(benchmark::State& state) {
  CQPLFile file;
  fill(file, state.range(0));
  file.Save();
  for (auto _ : state) {
    CQPLFile fresh;
    fresh.SetFileName(file.GetFileName());
    if (!fresh.Load()) state.SkipWithError("not loaded");
  }
  state.SetComplexityN(state.range(0));
}

void list_save_libxml2(benchmark::State& state) {
  PlainList list;
  invent_projects(state.range(0),
                  [&](const std::string& name, const std::string& path) { list[name] = path; });
  for (auto _ : state) {
    xmlDoc* doc = xmlNewDoc(as_xml("1.0"));
    xmlNode* root = xmlNewDocNode(doc, nullptr, as_xml("QPL"), nullptr);
    xmlDocSetRootElement(doc, root);
    xmlNode* projects = xmlNewChild(root, nullptr, as_xml("PROJECTS"), nullptr);
    for (const auto& [name, path] : list) {
      xmlNode* node = xmlNewChild(projects, nullptr, as_xml("PROJECT"), nullptr);
      xmlNewProp(node, as_xml("NAME"), as_xml(name));
      xmlNewProp(node, as_xml("QPRPATH"), as_xml(path));
    }
    save_and_free(doc, folder().path / "list.qpl");
  }
  state.SetComplexityN(state.range(0));
}

void list_save_orx(benchmark::State& state) {
  CQPLFile list;
  fill(list, state.range(0));
  for (auto _ : state) {
    if (!list.Save()) state.SkipWithError("not saved");
  }
  state.SetComplexityN(state.range(0));
}

// 5 MB of drill holes with their intervals, indented.
const std::string& large_document() {
  static const std::string document = [] {
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<holes>\n";
    for (int i = 0; text.size() < 5'000'000; ++i) {
      text += "\t<hole name=\"DDH" + std::to_string(i) + "\" x=\"4500.25\" y=\"7811.5\">\n";
      for (int j = 0; j < 8; ++j) {
        text += "\t\t<interval from=\"" + std::to_string(j) + "\" to=\"" + std::to_string(j + 1) +
                "\">0.53</interval>\n";
      }
      text += "\t</hole>\n";
    }
    return text + "</holes>\n";
  }();
  return document;
}

void text_query_libxml2(benchmark::State& state) {
  const std::string& text = large_document();
  for (auto _ : state) {
    std::size_t length = 0;
    xmlDoc* doc = xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, nullptr,
                                XML_PARSE_NONET | XML_PARSE_COMPACT);
    visit_elements(xmlDocGetRootElement(doc), "hole",
                   [&](xmlNode* node) { length += attribute(node, "name").size(); });
    xmlFreeDoc(doc);
    benchmark::DoNotOptimize(length);
  }
}

void text_query_orx(benchmark::State& state) {
  const std::string& text = large_document();
  for (auto _ : state) {
    std::size_t length = 0;
    COrxXMLDoc document;
    IXMLDOMElement* root = nullptr;
    IXMLDOMNodeList* list = nullptr;
    IXMLDOMNode* node = nullptr;
    if (!document.SetXMLText(&root, text.c_str())) state.SkipWithError("not parsed");
    document.SelectXMLNodes(root, "//hole", &list);
    CStringA name;
    while (document.NextXMLNode(list, &node)) {
      document.GetXMLAttribute(node, "name", name);
      length += static_cast<std::size_t>(name.GetLength());
      node->Release();
    }
    list->Release();
    root->Release();
    benchmark::DoNotOptimize(length);
  }
}

double megabytes_of(const char* field) {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line)) {
    if (line.starts_with(field)) return std::stod(line.substr(line.find(':') + 1)) / 1024;
  }
  return 0;
}

// The peak memory in MB that the work needs in a process of its own, above what that process had before.
template <class Work>
double peak_memory(Work work) {
  int ends[2];
  if (pipe(ends) != 0) return 0;
  double peak = 0;
  if (const pid_t child = fork(); child == 0) {
    malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << 5;  // resets the peak
    const double before = megabytes_of("VmRSS");
    work();
    peak = megabytes_of("VmHWM") - before;
    _exit(write(ends[1], &peak, sizeof peak) == sizeof peak ? 0 : 1);
  } else {
    waitpid(child, nullptr, 0);
  }
  if (read(ends[0], &peak, sizeof peak) != sizeof peak) peak = 0;
  close(ends[0]);
  close(ends[1]);
  return peak;
}

void peak_memory_of_loading(benchmark::State& state) {
  const fs::path path = folder().path / "large.xml";
  std::ofstream(path) << large_document();
  for (auto _ : state) {
    const double libxml2 = peak_memory([&] { benchmark::DoNotOptimize(read_file(path)); });
    const double orx = peak_memory([&] {
      COrxXMLDoc document;
      IXMLDOMElement* root = nullptr;
      document.SetFileName(folder().suite("large.xml").c_str());
      if (!document.LoadXMLDocument(&root)) _exit(1);
    });
    state.counters["libxml2_MB"] = libxml2;
    state.counters["orx_MB"] = orx;
    state.counters["ratio"] = orx / libxml2;
  }
}

BENCHMARK(project_open_libxml2);
BENCHMARK(project_open_orx);
BENCHMARK(project_save_libxml2);
BENCHMARK(project_save_orx);
BENCHMARK(list_load_libxml2)->Arg(10000)->Arg(200000)->Unit(benchmark::kMillisecond);
BENCHMARK(list_load_orx)->Arg(10000)->Arg(200000)->Unit(benchmark::kMillisecond);
BENCHMARK(list_save_libxml2)->Arg(10000)->Arg(200000)->Unit(benchmark::kMillisecond);
BENCHMARK(list_save_orx)->Arg(10000)->Arg(200000)->Unit(benchmark::kMillisecond);
BENCHMARK(text_query_libxml2)->Unit(benchmark::kMillisecond);
BENCHMARK(text_query_orx)->Unit(benchmark::kMillisecond);
BENCHMARK(peak_memory_of_loading)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
