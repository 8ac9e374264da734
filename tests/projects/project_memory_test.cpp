// Out of memory at each allocation in turn: the documented exception or result, and everything stays as it
// was.
#include <gtest/gtest.h>
#include <orx/projects/current_project.h>
#include <orx/projects/qpl_file.h>
#include <tests/support/environment.h>
#include <tests/support/failing_heap.h>

#include <cstring>

using namespace orx::testing;

namespace {

struct Host {
  explicit Host(const TempFolder& folder) : path(folder.suite_path("a project with a long name.qpr")) {
    std::strcpy(info.SiteName, "text");
    for (char* text : {info.SiteDatabase, info.ProjectName, info.DataGroupName})
      std::strcpy(text, info.SiteName);
    info.SiteDatabasePlatform = 8;
    file.SetFileName(path.c_str());
    list.SetFileName(folder.suite_path("list.qpl").c_str());
    list.SetProject(name, name);
    GetCurrentQPRInfo()->Clear();
  }

  bool IsAsItWas() {
    CStringA found;
    const bool has_current =
        GetCurrentQPRInfo()->GetFileName()[0] + GetCurrentQPRInfo()->GetQPRInfo()->SiteName[0] != 0;
    return !has_current && list.GetFirstProject(found, found) && found == name &&
           !list.GetNextProject(found, found);
  }

  const std::string path;
  const CStringA name = "name", other_name = "other";
  CQPRFile file;
  QPRInfo& info = *file.GetQPRInfo();
  CQPLFile list;
};

using Operation = int (*)(Host&);
const Operation kMakeCurrent = [](Host& h) { return ProjectSetting_LoadCurrentQPRInfo(h.path.c_str()), 1; };
const Operation kOperations[] = {
    [](Host& h) { return h.file.Save() * h.list.Save(); },
    [](Host& h) { return h.file.Load(); },
    [](Host& h) { return CQPLFile().IsEmpty() + (h.list = CQPLFile(h.list)).IsEmpty(); },
    [](Host& h) { return h.list.SetProject(h.other_name, h.name), 1; },
    kMakeCurrent,
};

TEST(ProjectMemory, OperationSucceedsOrLeavesEverythingAsItWasWhenMemoryRunsOut) {
  const TempFolder folder;
  for (const Operation& operation : kOperations) {
    bool has_failed = true;
    for (int count = 0; has_failed; ++count) {
      SCOPED_TRACE(std::to_string(&operation - kOperations) + " at " + std::to_string(count));
      Host host(folder);
      int done = 0;
      fail_heap_after(count, HeapFailure::kFromThen);
      try {
        done = operation(host);
      } catch (const CAtlException& problem) {
        EXPECT_TRUE(problem.m_hr == E_OUTOFMEMORY && operation != kMakeCurrent);
      } catch (const QprLoadFailedException&) {
        EXPECT_EQ(operation, kMakeCurrent);
      }
      has_failed = restore_heap();
      EXPECT_TRUE(done == 1 || (has_failed && host.IsAsItWas()));
    }
  }
}

}  // namespace
