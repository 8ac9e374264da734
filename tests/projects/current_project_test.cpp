#include <orx/projects/current_project.h>

#include <gtest/gtest.h>
#include <orx/projects/local_settings.h>
#include <orx/projects/qpl_file.h>

#include <cstring>
#include <filesystem>
#include <string>

#include "tests/support/environment.h"
#include "tests/support/process.h"

using namespace orx::testing;

namespace {

std::string failure_to_load(const std::string& path) {
  try {
    ProjectSetting_LoadCurrentQPRInfo(path.c_str());
  } catch (const QprLoadFailedException& failure) {
    return failure.what();
  }
  return "";
}

// The result of a getter and the buffer, which shows whether it was written.
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

  std::string Write(const std::string& name, const std::string& site) {
    write_file(folder.path("Pit1/" + name),
               "<QPR><PROJECT><PROPERTY NAME='SiteName' VALUE='" + site +
                   "'/><PROPERTY NAME='SiteDatabase' VALUE='site.mdb'/>"
                   "<PROPERTY NAME='SiteDatabasePlatform' VALUE='ACCESS 2016'/>"
                   "<PROPERTY NAME='ProjectName' VALUE='Pit 1'/>"
                   "<PROPERTY NAME='DataGroupName' VALUE='Survey'/></PROJECT></QPR>");
    return folder.suite_path("Pit1\\" + name);
  }

  const TempFolder folder;
  QPRInfo& info = *GetCurrentQPRInfo()->GetQPRInfo();
};

TEST_F(CurrentProject, GettersReadEmptyAndLoadedProject) {
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
      {ProjectSetting_GetProjectDescription, "0:", "0:text"},
      {ProjectSetting_GetProjectCoordinates, "0:", "0:local"},
      {ProjectSetting_GetCurrentQPRPath, "0:untouched", "1:" + folder.suite_path("Pit1\\a.qpr"), 0},
      {ProjectSetting_GetCurrentProjectPath, "-1:untouched", "0:" + folder.suite_path("Pit1")},
      {ProjectSetting_GetSiteProjectDatagroup, "-1:\\Unknown Site\\Unknown Project\\Unknown Datagroup\\",
       "0:\\Mine A\\Pit 1\\Survey\\"}};
  int platform = 42;
  EXPECT_TRUE(ProjectSetting_GetDatabasePlatform(&platform) == 0 && platform == 0);
  for (const auto& getter : getters) EXPECT_EQ(answer(getter.get), getter.empty);
  ASSERT_EQ(failure_to_load(Write("a.qpr", "Mine A")), "");
  std::strcpy(info.Description, "text");
  std::strcpy(info.Coordinates, "local");
  for (const auto& getter : getters) {
    EXPECT_EQ(answer(getter.get), getter.loaded);
    EXPECT_EQ(getter.get(nullptr), getter.of_null);
  }
  EXPECT_TRUE(ProjectSetting_GetDatabasePlatform(&platform) == 0 && platform == 8);
  EXPECT_EQ(ProjectSetting_GetDatabasePlatform(nullptr), -1);
  info.SiteDatabasePlatform = 13;
  EXPECT_EQ(answer(ProjectSetting_GetDatabaseServerName), "-1:untouched");

  EXPECT_EQ(ProjectSetting_SaveCurrentQPRInfo("elsewhere"), 1);  // saves to the file of the project
  EXPECT_NE(read_file(folder.path("Pit1/a.qpr")).find("SQL2019"), std::string::npos);
}

TEST_F(CurrentProject, GetProjectNameExRespectsTheLengthOfTheBuffer) {
  std::size_t length = 0;
  const auto get = [&](char* buffer) { return ProjectSetting_GetProjectNameEx(buffer, &length); };
  std::strcpy(info.ProjectName, "Pit 1");
  EXPECT_EQ(get(nullptr), 0);
  EXPECT_EQ(length, 5U);
  EXPECT_EQ(answer(get), "0:Pit 1");
  length = 4;
  EXPECT_EQ(answer(get), "-1:");
  EXPECT_EQ(ProjectSetting_GetProjectNameEx(nullptr, nullptr), -1);
}

TEST_F(CurrentProject, PathGettersNeverExceedTheirBuffer) {
  const std::string longest(ORX_PROJECT_PATH_SIZE - 2, 'x');
  const std::string cases[][3] = {{'\\' + longest, "1:\\" + longest, "0:"},
                                  {longest + "\\y", "0:untouched", "0:" + longest},
                                  {longest + "x\\y", "0:untouched", "0:" + longest + 'x'},
                                  {longest + "xx\\y", "0:untouched", "-1:untouched"},
                                  {"bare.qpr", "1:bare.qpr", "0:"}};
  for (const auto& [file, path, project_path] : cases) {
    GetCurrentQPRInfo()->SetFileName(file.c_str());
    EXPECT_EQ(answer(ProjectSetting_GetCurrentQPRPath), path);
    EXPECT_EQ(answer(ProjectSetting_GetCurrentProjectPath), project_path);
  }
}

TEST_F(CurrentProject, GettersLeaveBufferEmptyWhenTextDoesNotFit) {
  const struct {
    int (*get)(char*);
    int (*get_sized)(char*, std::size_t, std::size_t*);
    char* field;
    std::size_t size;
  } getters[] = {{ProjectSetting_GetSiteName, ProjectSetting_GetSiteNameN, info.SiteName, ORX_SITE_NAME_SIZE},
                 {ProjectSetting_GetSiteDatabase, ProjectSetting_GetSiteDatabaseN, info.SiteDatabase,
                  ORX_SITE_DATABASE_SIZE},
                 {ProjectSetting_GetDatabaseServerName, ProjectSetting_GetDatabaseServerNameN,
                  info.SiteDatabaseServerName, ORX_SERVER_NAME_SIZE},
                 {ProjectSetting_GetProjectName, ProjectSetting_GetProjectNameN, info.ProjectName,
                  ORX_PROJECT_NAME_SIZE},
                 {ProjectSetting_GetDataGroupName, ProjectSetting_GetDataGroupNameN, info.DataGroupName,
                  ORX_DATA_GROUP_NAME_SIZE},
                 {ProjectSetting_GetProjectBasePath, ProjectSetting_GetProjectBasePathN, info.ProjectBasePath,
                  ORX_BASE_PATH_SIZE},
                 {ProjectSetting_GetProjectDescription, ProjectSetting_GetProjectDescriptionN,
                  info.Description, ORX_DESCRIPTION_SIZE},
                 {ProjectSetting_GetProjectCoordinates, ProjectSetting_GetProjectCoordinatesN,
                  info.Coordinates, ORX_COORDINATES_SIZE}};
  for (const auto& [get, get_sized, field, size] : getters) {
    const std::string longest(size - 1, 'x'), longer = longest + "\u0416";
    std::strcpy(field, longest.c_str());
    EXPECT_EQ(answer(get), "0:" + longest);
    std::strcpy(field, longer.c_str());
    EXPECT_EQ(answer(get), "-1:");
    std::size_t needed = 0;
    EXPECT_EQ(get_sized(nullptr, 0, &needed), 0);
    EXPECT_EQ(needed, longer.size() + 1);
    const auto sized = [&, get_sized = get_sized](std::size_t space) {
      return answer([&](char* buffer) { return get_sized(buffer, space, nullptr); });
    };
    EXPECT_EQ(sized(needed), "0:" + longer);
    EXPECT_EQ(sized(needed - 1), "-1:");
    EXPECT_EQ(sized(0), "-1:untouched");
    EXPECT_EQ(get_sized(nullptr, 0, nullptr), -1);
  }
  EXPECT_EQ(answer(ProjectSetting_GetSiteProjectDatagroup), "-1:");
  std::memset(info.SiteName, 'x', sizeof info.SiteName);
  EXPECT_EQ(answer([](char* buffer) { return ProjectSetting_GetSiteNameN(buffer, 300, nullptr); }),
            "0:" + std::string(sizeof info.SiteName - 1, 'x'))
      << "a host has filled the field without a NUL";
}

TEST_F(CurrentProject, LoadThrowsAndKeepsProjectsWhenItFails) {
  const std::string a = Write("a.qpr", "A"), b = Write("b.qpr", "B"), nameless = Write("c.qpr", "");
  const std::string missing = folder.suite_path("missing"), directory = folder.suite_path("Pit1");
  const std::string distant = "C:\\" + std::string(300, 'x');
  std::string cyrillic = "C:\\";
  for (int i = 0; i < 100; ++i) cyrillic += "\u0416";
  const std::pair<std::string, std::string> loads[] = {
      {a, ""},
      {b, ""},
      {missing, "Cannot find the TESSEL project file '" + missing + "'."},
      {distant, ("Cannot find the TESSEL project file '" + distant).substr(0, ORX_LOAD_MESSAGE_LENGTH)},
      {cyrillic, ("Cannot find the TESSEL project file '" + cyrillic).substr(0, ORX_LOAD_MESSAGE_LENGTH - 1)},
      {directory, "Failed when loading the TESSEL project file '" + directory + "'."},
      {nameless, "The TESSEL project file '" + nameless + "' is invalid. The site name cannot be empty."}};
  for (const auto& [path, failure] : loads) EXPECT_EQ(failure_to_load(path), failure);
  EXPECT_THROW(ProjectSetting_LoadCurrentQPRInfo(nullptr), QprLoadFailedException);
  EXPECT_EQ(answer(ProjectSetting_GetCurrentQPRPath), "1:" + b);
  for (int i = 0; i < 2; ++i) {  // the history is one step deep
    EXPECT_EQ(ProjectSetting_RestorePreviousQPRInfo(), 1);
    EXPECT_EQ(answer(ProjectSetting_GetSiteName), "0:A");
    EXPECT_EQ(answer(ProjectSetting_GetCurrentQPRPath), "1:" + a);
  }
}

TEST(LocalSettings, GettersReturnFoldersThatWereSet) {
  CLocalProjectSettings& settings = *GetLocalProjectSettings();
  CStringA a, b, c;
  settings.SetLocalProjectsFolder("a");
  settings.SetHalvarkProjectsFolder("b");
  settings.SetHalvarkProgFolder("c");
  settings.GetLocalProjectsFolder(a);
  settings.GetHalvarkProjectsFolder(b);
  settings.GetHalvarkProgFolder(c);
  EXPECT_EQ(a + b + c, "abc");
}

// Runs when the statics of the process have been destroyed.
bool is_used_at_end = false;
[[gnu::destructor]] void use_at_end() {
  CStringA path;
  if (is_used_at_end && GetQPLInfo()->GetProject("late", path) != 1) _exit(1);
}

TEST(ProcessWide, ObjectsMayBeUsedByDestructorsOfTheHost) {
  in_new_process([] {
    is_used_at_end = true;
    GetQPLInfo()->SetProject("late", "path");
  });
}

}  // namespace
