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

TEST_F(CurrentProject, IsEmptyUntilOneIsLoaded) {
  int platform = 42;
  EXPECT_EQ(answer(ProjectSetting_GetSiteName), "-1:untouched");
  EXPECT_EQ(answer(ProjectSetting_GetSiteDatabase), "-1:untouched");
  EXPECT_EQ(answer(ProjectSetting_GetDatabaseServerName), "-1:untouched");
  EXPECT_EQ(answer(ProjectSetting_GetProjectName), "-1:untouched");
  EXPECT_EQ(answer(ProjectSetting_GetDataGroupName), "-1:untouched");
  EXPECT_EQ(answer(ProjectSetting_GetProjectBasePath), "-1:untouched");
  EXPECT_EQ(answer(ProjectSetting_GetProjectDescription), "0:");
  EXPECT_EQ(answer(ProjectSetting_GetProjectCoordinates), "0:");
  EXPECT_EQ(answer(ProjectSetting_GetCurrentQPRPath), "0:untouched");
  EXPECT_EQ(answer(ProjectSetting_GetCurrentProjectPath), "-1:untouched");
  EXPECT_EQ(answer(ProjectSetting_GetSiteProjectDatagroup),
            "-1:\\Unknown Site\\Unknown Project\\Unknown Datagroup\\");
  EXPECT_EQ(ProjectSetting_GetDatabasePlatform(&platform), 0);
  EXPECT_EQ(platform, 0);
}

TEST_F(CurrentProject, IsLoadedReadChangedAndSaved) {
  const std::string path = Write("a.qpr", "Mine A");
  ASSERT_EQ(failure_to_load(path), "");
  int platform = 0;
  EXPECT_EQ(answer(ProjectSetting_GetSiteName), "0:Mine A");
  EXPECT_EQ(answer(ProjectSetting_GetSiteDatabase), "0:" + folder.suite_path("Pit1\\site.mdb"));
  EXPECT_EQ(answer(ProjectSetting_GetDatabaseServerName), "0:") << "JET has no server";
  EXPECT_EQ(answer(ProjectSetting_GetProjectName), "0:Pit 1");
  EXPECT_EQ(answer(ProjectSetting_GetDataGroupName), "0:Survey");
  EXPECT_EQ(answer(ProjectSetting_GetProjectBasePath), "0:" + folder.suite_path());
  EXPECT_EQ(answer(ProjectSetting_GetCurrentQPRPath), "1:" + path);
  EXPECT_EQ(answer(ProjectSetting_GetCurrentProjectPath), "0:" + folder.suite_path("Pit1"));
  EXPECT_EQ(answer(ProjectSetting_GetSiteProjectDatagroup), "0:\\Mine A\\Pit 1\\Survey\\");
  EXPECT_EQ(ProjectSetting_GetDatabasePlatform(&platform), 0);
  EXPECT_EQ(platform, 8);

  QPRInfo& info = *GetCurrentQPRInfo()->GetQPRInfo();
  info.SiteDatabasePlatform = 13;
  EXPECT_EQ(answer(ProjectSetting_GetDatabaseServerName), "-1:untouched");
  std::strcpy(info.Description, "changed");
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
  CQPRFile& project = *GetCurrentQPRInfo();
  project.SetFileName(("\\" + std::string(258, 'x')).c_str());
  EXPECT_EQ(answer(ProjectSetting_GetCurrentQPRPath), "1:\\" + std::string(258, 'x'));
  EXPECT_EQ(answer(ProjectSetting_GetCurrentProjectPath), "0:");
  project.SetFileName((std::string(259, 'x') + "\\y").c_str());
  EXPECT_EQ(answer(ProjectSetting_GetCurrentQPRPath), "0:untouched");
  EXPECT_EQ(answer(ProjectSetting_GetCurrentProjectPath), "0:" + std::string(259, 'x'));
  project.SetFileName((std::string(260, 'x') + "\\y").c_str());
  EXPECT_EQ(answer(ProjectSetting_GetCurrentProjectPath), "-1:untouched");
  project.SetFileName("bare.qpr");
  EXPECT_EQ(answer(ProjectSetting_GetCurrentProjectPath), "0:");
}

TEST_F(CurrentProject, NullBuffersAreFailures) {
  ASSERT_EQ(failure_to_load(Write("a.qpr", "A")), "");
  for (const auto get :
       {ProjectSetting_GetSiteName, ProjectSetting_GetSiteDatabase, ProjectSetting_GetDatabaseServerName,
        ProjectSetting_GetProjectName, ProjectSetting_GetDataGroupName, ProjectSetting_GetProjectBasePath,
        ProjectSetting_GetProjectDescription, ProjectSetting_GetProjectCoordinates,
        ProjectSetting_GetCurrentProjectPath, ProjectSetting_GetSiteProjectDatagroup}) {
    EXPECT_EQ(get(nullptr), -1);
  }
  EXPECT_EQ(ProjectSetting_GetCurrentQPRPath(nullptr), 0);
  EXPECT_EQ(ProjectSetting_GetDatabasePlatform(nullptr), -1);
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
