// Out of memory at every allocation: the documented exception or result, and everything is as it was.
#include <gtest/gtest.h>
#include <orx/projects/current_project.h>
#include <orx/projects/qpl_file.h>
#include <tests/support/failing_heap.h>

#include <cstring>
#include <string>

#include "tests/support/environment.h"
#include "tests/support/xml.h"

using namespace orx::testing;

namespace {

struct Host {
  explicit Host(const std::string& folder) : path(folder + "\\a project with a long name.qpr") {
    QPRInfo& info = *file.GetQPRInfo();
    for (char* text : {info.SiteName, info.SiteDatabase, info.ProjectName, info.DataGroupName})
      std::strcpy(text, "text");
    info.SiteDatabasePlatform = 8;
    file.SetFileName(path.c_str());
    list.SetFileName((folder + "\\list.qpl").c_str());
    list.SetProject("old", "path");
    GetCurrentQPRInfo()->Clear();
  }

  // No project is current, and the list has its one entry.
  bool IsAsItWas() {
    CStringA found, its_path;
    return GetCurrentQPRInfo()->GetFileName()[0] == '\0' &&
           GetCurrentQPRInfo()->GetQPRInfo()->SiteName[0] == '\0' && list.GetFirstProject(found, its_path) &&
           found + its_path == "oldpath" && !list.GetNextProject(found, its_path);
  }

  const std::string path;
  const CStringA name = "name";
  CQPRFile file;
  CQPLFile list, other;
};

const struct {
  const char* name;
  int (*run)(Host&);
  bool makes_current = false;
} kOperations[] = {
    {"save", [](Host& h) { return h.file.Save() * h.list.Save(); }},
    {"load", [](Host& h) { return h.file.Load(); }},
    {"copy", [](Host& h) { return CQPLFile().IsEmpty() + CQPLFile(h.list).IsEmpty(); }},
    {"assign", [](Host& h) { return h.list = h.other, 1; }},
    {"set", [](Host& h) { return h.list.SetProject(h.name, h.name), 1; }},
    {"make current", [](Host& h) { return ProjectSetting_LoadCurrentQPRInfo(h.path.c_str()), 1; }, true},
};

TEST(ProjectMemory, OperationsSucceedOrLeaveEverythingAsItWas) {
  const TempFolder folder;
  for (const auto& operation : kOperations) {
    bool has_failed = true;
    for (int count = 0; has_failed; ++count) {
      Host host(folder.suite_path());
      int done = 0;
      fail_heap_after(count, HeapFailure::kFromThen);
      try {
        done = operation.run(host);
      } catch (const CAtlException& problem) {
        EXPECT_TRUE(problem.m_hr == E_OUTOFMEMORY && !operation.makes_current) << operation.name;
      } catch (const QprLoadFailedException&) {
        EXPECT_TRUE(operation.makes_current) << operation.name;
      }
      has_failed = restore_heap();
      EXPECT_TRUE(done == 1 || (has_failed && host.IsAsItWas())) << operation.name << count;
    }
  }
}

}  // namespace
