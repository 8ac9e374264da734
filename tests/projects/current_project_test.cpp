#include <orx/projects/current_project.h>

#include <gtest/gtest.h>
#include <orx/projects/local_settings.h>

#include <cstring>
#include <filesystem>
#include <string>

#include "tests/support/temp_folder.h"

namespace orx::testing {
namespace {

std::string failure_to_load(const std::string& path) {
  try {
    ProjectSetting_LoadCurrentQPRInfo(path.c_str());
  } catch (const std::exception& failure) {
    return failure.what();
  }
  return "";
}

// What a getter of text answers, in a buffer that shows whether it was touched.
template <class Getter>
std::string answer(Getter get) {
  char buffer[300] = "untouched";
  const int result = get(buffer);
  return std::to_string(result) + ":" + buffer;
}

class CurrentProject : public ::testing::Test {
 protected:
  CurrentProject() {
    GetCurrentQPRInfo()->Clear();
    std::filesystem::create_directory(folder.path("Pit1"));
  }

  std::string Write(const char* name, const char* site) {
    CQPRFile file;
    const std::string path = folder.suite_path(std::string("Pit1\\") + name);
    file.SetFileName(path.c_str());
    QPRInfo& info = *file.GetQPRInfo();
    std::strcpy(info.SiteName, site);
    std::strcpy(info.SiteDatabase, "site.mdb");
    std::strcpy(info.ProjectName, "Pit 1");
    std::strcpy(info.DataGroupName, "Survey");
    info.SiteDatabasePlatform = 8;
    EXPECT_EQ(file.Save(), 1);
    return path;
  }

  TempFolder folder;
};

TEST_F(CurrentProject, IsReadThroughItsGetters) {
  const struct {
    int (*get)(char*);
    std::string empty, loaded;
    int of_null = -1;
  } getters[] = {
      {ProjectSetting_GetSiteName, "-1:untouched", "0:Mine A"},
      {ProjectSetting_GetSiteDatabase, "-1:untouched", "0:" + folder.suite_path("Pit1\\site.mdb")},
      {ProjectSetting_GetDatabaseServerName, "-1:untouched", "0:"},  // JET has no server
      {ProjectSetting_GetProjectName, "-1:untouched", "0:Pit 1"},
      {ProjectSetting_GetDataGroupName, "-1:untouched", "0:Survey"},
      {ProjectSetting_GetProjectBasePath, "-1:untouched", "0:" + folder.suite_path()},
      {ProjectSetting_GetProjectDescription, "0:", "0:"},
      {ProjectSetting_GetProjectCoordinates, "0:", "0:"},
      {ProjectSetting_GetCurrentQPRPath, "0:untouched", "1:" + folder.suite_path("Pit1\\a.qpr"), 0},
      {ProjectSetting_GetCurrentProjectPath, "-1:untouched", "0:" + folder.suite_path("Pit1")},
      {ProjectSetting_GetSiteProjectDatagroup, "-1:\\Unknown Site\\Unknown Project\\Unknown Datagroup\\",
       "0:\\Mine A\\Pit 1\\Survey\\"}};
  int platform = 42;
  EXPECT_EQ(ProjectSetting_GetDatabasePlatform(&platform) + platform, 0);
  for (const auto& getter : getters) EXPECT_EQ(answer(getter.get), getter.empty);
  ASSERT_EQ(failure_to_load(Write("a.qpr", "Mine A")), "");
  for (const auto& getter : getters) {
    EXPECT_EQ(answer(getter.get), getter.loaded);
    EXPECT_EQ(getter.get(nullptr), getter.of_null);
  }
  EXPECT_EQ(ProjectSetting_GetDatabasePlatform(&platform) + platform, 8);
  EXPECT_EQ(ProjectSetting_GetDatabasePlatform(nullptr), -1);
  GetCurrentQPRInfo()->GetQPRInfo()->SiteDatabasePlatform = 13;
  EXPECT_EQ(answer(ProjectSetting_GetDatabaseServerName), "-1:untouched");
}

TEST_F(CurrentProject, IsSavedWhereItCameFrom) {
  ASSERT_EQ(failure_to_load(Write("a.qpr", "Mine A")), "");
  std::strcpy(GetCurrentQPRInfo()->GetQPRInfo()->Description, "changed");
  EXPECT_EQ(ProjectSetting_SaveCurrentQPRInfo("elsewhere"), 1);
  EXPECT_NE(read_file(folder.path("Pit1/a.qpr")).find("changed"), std::string::npos);
}

TEST_F(CurrentProject, NameIsCopiedIntoTheRoomThereIs) {
  char buffer[6] = "?";
  std::size_t length = 42;
  EXPECT_EQ(ProjectSetting_GetProjectNameEx(nullptr, &length), 0);
  EXPECT_EQ(length, 0u);
  EXPECT_EQ(ProjectSetting_GetProjectNameEx(buffer, &length), -1);
  EXPECT_STREQ(buffer, "?") << "an empty name";
  std::strcpy(GetCurrentQPRInfo()->GetQPRInfo()->ProjectName, "Pit 1");
  EXPECT_EQ(ProjectSetting_GetProjectNameEx(nullptr, &length), 0);
  EXPECT_EQ(length, 5u);
  EXPECT_EQ(ProjectSetting_GetProjectNameEx(buffer, &length), 0);
  EXPECT_STREQ(buffer, "Pit 1");
  length = 4;
  EXPECT_EQ(ProjectSetting_GetProjectNameEx(buffer, &length), -1);
  EXPECT_STREQ(buffer, "");
  EXPECT_EQ(ProjectSetting_GetProjectNameEx(nullptr, nullptr), -1);
}

TEST_F(CurrentProject, PathsHaveRoomFor259Bytes) {
  const std::string room(258, 'x');
  const std::string cases[][3] = {{'\\' + room, "1:\\" + room, "0:"},
                                  {room + "x\\y", "0:untouched", "0:" + room + 'x'},
                                  {room + "xx\\y", "0:untouched", "-1:untouched"},
                                  {"bare.qpr", "1:bare.qpr", "0:"}};
  for (const auto& [file, path, project_path] : cases) {
    GetCurrentQPRInfo()->SetFileName(file.c_str());
    EXPECT_EQ(answer(ProjectSetting_GetCurrentQPRPath), path);
    EXPECT_EQ(answer(ProjectSetting_GetCurrentProjectPath), project_path);
  }
}

TEST_F(CurrentProject, ATextWithoutItsEndIsCut) {
  QPRInfo& info = *GetCurrentQPRInfo()->GetQPRInfo();
  for (auto* name : {&info.SiteName, &info.ProjectName, &info.DataGroupName}) std::memset(name, 'x', 51);
  const std::string longest(50, 'x');
  EXPECT_EQ(answer(ProjectSetting_GetSiteName), "0:" + longest);
  EXPECT_EQ(answer(ProjectSetting_GetSiteProjectDatagroup),
            "0:\\" + longest + "\\" + longest + "\\" + longest + "\\");
}

TEST_F(CurrentProject, FailuresThrowAndChangeNothing) {
  const std::string good = Write("a.qpr", "A");
  const std::string nameless = Write("b.qpr", "");
  write_file(folder.path("Pit1/c.qpr"), "no XML");
  ASSERT_EQ(failure_to_load(good), "");
  const std::string missing = folder.suite_path("missing");
  const std::string broken = folder.suite_path("Pit1\\c.qpr");
  const std::string directory = folder.suite_path("Pit1");
  const std::string distant = "C:\\" + std::string(300, 'x');
  EXPECT_EQ(failure_to_load(missing), "Cannot find the TESSEL project file '" + missing + "'.");
  EXPECT_EQ(failure_to_load(distant), ("Cannot find the TESSEL project file '" + distant).substr(0, 199));
  EXPECT_EQ(failure_to_load(broken), "Failed when loading the TESSEL project file '" + broken + "'.");
  EXPECT_EQ(failure_to_load(directory), "Failed when loading the TESSEL project file '" + directory + "'.");
  EXPECT_EQ(failure_to_load(nameless),
            "The TESSEL project file '" + nameless + "' is invalid. The site name cannot be empty.");
  EXPECT_THROW(ProjectSetting_LoadCurrentQPRInfo(nullptr), QprLoadFailedException);
  EXPECT_EQ(answer(ProjectSetting_GetCurrentQPRPath), "1:" + good);
}

TEST_F(CurrentProject, HistoryIsOneStepDeep) {
  const std::string a = Write("a.qpr", "A");
  ASSERT_EQ(failure_to_load(a), "");
  ASSERT_EQ(failure_to_load(Write("b.qpr", "B")), "");
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(ProjectSetting_RestorePreviousQPRInfo(), 1);
    EXPECT_EQ(answer(ProjectSetting_GetSiteName), "0:A");
    EXPECT_EQ(answer(ProjectSetting_GetCurrentQPRPath), "1:" + a);
  }
}

TEST(LocalSettings, KeepThreeFolders) {
  CLocalProjectSettings& settings = *GetLocalProjectSettings();
  settings.SetLocalProjectsFolder("a");
  settings.SetHalvarkProjectsFolder("b");
  settings.SetHalvarkProgFolder("c");
  const CLocalProjectSettings copy(settings);
  CStringA a, b, c;
  copy.GetLocalProjectsFolder(a);
  copy.GetHalvarkProjectsFolder(b);
  copy.GetHalvarkProgFolder(c);
  EXPECT_EQ(a + b + c, "abc");
}

}  // namespace
}  // namespace orx::testing
