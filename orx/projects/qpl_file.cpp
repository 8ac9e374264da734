#include <orx/projects/qpl_file.h>

#include <orx/platform/code_page.h>
#include <orx/projects/never_destroyed.h>
#include <orx/projects/xml_handle.h>

#include <map>
#include <memory>
#include <new>

using orx::XmlHandle;

// The entries, the default project and the position of the iteration. A copy has no iteration: its cursor
// would point into the other map.
struct CQPLFile::List {
  using Projects = std::map<CStringA, CStringA>;  // name to path

  List() = default;
  List(const List& other) : projects(other.projects), default_project(other.default_project) {}

  int GetCurrent(CStringA& name, CStringA& path) const {
    if (cursor == projects.end()) return 0;
    name = cursor->first;
    path = cursor->second;
    return 1;
  }

  Projects projects;
  CStringA default_project;
  Projects::const_iterator cursor = projects.end();  // the entry that was returned last; end() for none
};

namespace {

// Runs work that allocates through the standard library, and raises CAtlException when memory runs out.
template <class Work>
auto translate_exceptions(Work work) {
  try {
    return work();
  } catch (const std::bad_alloc&) {
    AtlThrow(E_OUTOFMEMORY);
  }
}

orx::NeverDestroyed<CQPLFile> project_list;

}  // namespace

CQPLFile::CQPLFile() : list_(translate_exceptions([] { return std::make_unique<List>(); })) {}
CQPLFile::CQPLFile(const CQPLFile& other)
    : CProjectFile(other),
      list_(translate_exceptions([&] { return std::make_unique<List>(*other.list_); })) {}

CQPLFile& CQPLFile::operator=(const CQPLFile& other) {
  auto copy = translate_exceptions([&] { return std::make_unique<List>(*other.list_); });
  CProjectFile::operator=(other);
  list_ = std::move(copy);
  return *this;
}

CQPLFile::~CQPLFile() = default;

int CQPLFile::Load() {
  const int result = Complete([this] { return ReadList(); });
  if (!result) Clear();
  return result;
}

int CQPLFile::ReadList() {
  XmlHandle<IXMLDOMElement> root;
  XmlHandle<IXMLDOMNode> projects, node;
  XmlHandle<IXMLDOMNodeList> nodes;
  if (!LoadXMLDocument(root.Out())) return 0;
  if (!SelectSingleXMLNode("//PROJECTS", projects.Out())) return 0;
  if (projects == nullptr) return Fail("there is no PROJECTS element");
  if (!SelectXMLNodes(projects, "//PROJECT", nodes.Out())) return 0;
  Clear();
  while (NextXMLNode(nodes, node.Out())) AddNode(node);
  return 1;
}

// Adds the entry of a PROJECT element. An entry whose name is already in the list can still be the default.
void CQPLFile::AddNode(IXMLDOMNode* node) {
  CStringA name, path, mark;
  if (!FindXMLAttribute(node, "NAME", name) || !FindXMLAttribute(node, "QPRPATH", path)) return;
  if (name.Trim().IsEmpty() || path.Trim().IsEmpty()) return;
  // Keeps the first entry of a name. The hint saves the search, since files are in the order of the names.
  list_->projects.emplace_hint(list_->projects.end(), name, path);
  if (!FindXMLAttribute(node, "DEFAULT", mark)) return;
  if (orx::platform::compare_no_case(mark.Trim(), "TRUE") == 0) list_->default_project = name;
}

int CQPLFile::Save() {
  return SaveWritten([this] { return WriteList(); });
}

// Leaves out an entry or attribute that cannot be written, and saves the rest.
int CQPLFile::WriteList() {
  XmlHandle<IXMLDOMElement> root, projects, element;
  if (!CreateXMLDocument(root.Out(), "QPL")) return 0;
  if (!CreateXMLElement(root, "PROJECTS", projects.Out())) return 0;
  for (const auto& [name, path] : list_->projects) {
    if (name.IsEmpty() || path.IsEmpty()) continue;
    if (!CreateXMLElement(projects, "PROJECT", element.Out())) continue;
    SetXMLAttributeText(element, "NAME", name);
    SetXMLAttributeText(element, "QPRPATH", path);
    if (name == list_->default_project) SetXMLAttributeText(element, "DEFAULT", "TRUE");
  }
  return 1;
}

int CQPLFile::IsEmpty() const { return list_->projects.empty(); }

void CQPLFile::Clear() {
  list_->projects.clear();
  list_->default_project.Empty();
  list_->cursor = list_->projects.end();
}

void CQPLFile::SetProject(const CStringA& name, const CStringA& path) {
  translate_exceptions([&] { list_->projects[name] = path; });
}

int CQPLFile::GetProject(const CStringA& name, CStringA& path) const {
  const auto found = list_->projects.find(name);
  if (found == list_->projects.end()) return 0;
  path = found->second;
  return 1;
}

int CQPLFile::RemoveProject(const CStringA& name) {
  if (name.IsEmpty() || name == list_->default_project) return 0;
  const auto found = list_->projects.find(name);
  if (found == list_->projects.end()) return 0;
  if (found == list_->cursor) list_->cursor = list_->projects.end();
  list_->projects.erase(found);
  return 1;
}

void CQPLFile::GetDefaultProject(CStringA& name) const { name = list_->default_project; }
void CQPLFile::SetDefaultProject(const CStringA& name) { list_->default_project = name; }

int CQPLFile::GetFirstProject(CStringA& name, CStringA& path) {
  list_->cursor = list_->projects.begin();
  return list_->GetCurrent(name, path);
}

int CQPLFile::GetNextProject(CStringA& name, CStringA& path) {
  if (list_->cursor != list_->projects.end()) ++list_->cursor;
  return list_->GetCurrent(name, path);
}

CQPLFile* GetQPLInfo() { return &project_list.object; }
