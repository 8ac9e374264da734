#include <orx/projects/qpr_file.h>

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <climits>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <string>

#include "tests/support/environment.h"
#include "tests/support/temp_folder.h"
#include "tests/support/xml.h"

namespace orx::testing {
namespace {

std::string property(const std::string& name, const std::string& value) {
  return "<PROPERTY NAME=\"" + name + "\" VALUE=\"" + value + "\"/>";
}

class QprFile : public ::testing::Test {
 protected:
  QprFile() {
    std::filesystem::create_directory(folder.path("Pit 1"));
    file.SetFileName(folder.suite_path("Pit 1\\a.qpr").c_str());
  }

  int Load(const std::string& properties) {
    write_file(folder.path("Pit 1/a.qpr"), "<QPR><PROJECT>" + properties + "</PROJECT></QPR>");
    return file.Load();
  }

  TempFolder folder;
  CQPRFile file;
  QPRInfo& info = *file.GetQPRInfo();
};

TEST_F(QprFile, IsSavedAsItsPropertiesInOrder) {
  std::strcpy(info.SiteName, "Mine \"A\" & <B>\r\n\t\u00FC");
  std::strcpy(info.SiteDatabase, "D:\\old\\site.mdb");
  info.SiteDatabasePlatform = 8;
  std::strcpy(info.Description, std::string(128, 'd').c_str());
  info.MinorVersion = -7;
  const QPRInfo before = info;
  ASSERT_EQ(file.Save(), 1) << failure_of(file);
  EXPECT_EQ(std::memcmp(&info, &before, sizeof info), 0);
  const char* head = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<QPR>\n\t<PROJECT>\n";
  std::string expected = head;
  for (const auto& [name, value] : {std::pair<std::string, std::string>(
                                        "SiteName", "Mine &quot;A&quot; &amp; &lt;B&gt;&#13;&#10;&#9;\u00FC"),
                                    {"SiteDatabase", "D:\\old\\site.mdb"},
                                    {"SiteDatabasePlatform", "ACCESS 2016"},
                                    {"SiteDatabaseServerName", ""},
                                    {"ProjectName", ""},
                                    {"DataGroupName", ""},
                                    {"Coordinates", ""},
                                    {"Description", std::string(128, 'd')},
                                    {"MajorVersion", "0"},
                                    {"MinorVersion", "-7"},
                                    {"ReleaseVersion", "0"}}) {
    expected += "\t\t" + property(name, value) + "\n";
  }
  EXPECT_EQ(read_file(folder.path("Pit 1/a.qpr")), expected + "\t</PROJECT>\n</QPR>\n");

  file.Clear();
  file.SetFileName(folder.suite_path("Pit 1\\a.qpr").c_str());
  ASSERT_EQ(file.Load(), 1) << failure_of(file);
  EXPECT_STREQ(info.SiteName, before.SiteName);
  EXPECT_EQ(info.MinorVersion, -7);
  EXPECT_EQ(info.ProjectBasePath, folder.suite_path());
  EXPECT_EQ(info.SiteDatabase, folder.suite_path("Pit 1\\site.mdb"))
      << "a JET database lies beside its project";
}

TEST_F(QprFile, ReadsPropertiesByName) {
  ASSERT_EQ(
      Load(property("sitename", "first") + property("SITENAME", "last") + property("Unknown", "x") +
           property("SiteDatabasePlatform", "sql server 2014") + property("SiteDatabase", "\\\\srv\\db") +
           property("MajorVersion", " +6x") + property("MinorVersion", "99999999999999999999") +
           property("ReleaseVersion", "-99999999999") +
           "<PROPERTY VALUE=\"x\"/><PROPERTY NAME=\"ProjectName\"/>" + property("Coordinates", "local") +
           property("Description", "text")),
      1)
      << failure_of(file);
  EXPECT_STREQ(info.SiteName, "last");
  EXPECT_EQ(info.SiteDatabasePlatform, 10);
  EXPECT_STREQ(info.SiteDatabase, "\\\\srv\\db") << "stays as read on a server";
  EXPECT_STREQ(info.ProjectName, "");
  EXPECT_EQ(info.MajorVersion, 6);
  EXPECT_EQ(info.MinorVersion, INT_MAX);
  EXPECT_EQ(info.ReleaseVersion, INT_MIN);
  EXPECT_EQ(file.IsSQLPlatform(), 1);
  EXPECT_EQ(file.IsJETPlatform(), 0);

  // The names of the elements around do not matter, and a second file resets all but two properties.
  write_file(folder.path("Pit 1/a.qpr"),
             "<X><PROJECT/><Y>" + property("SiteDatabasePlatform", "dBase") + "</Y></X>");
  ASSERT_EQ(file.Load(), 1);
  EXPECT_STREQ(info.SiteName, "");
  EXPECT_EQ(info.SiteDatabasePlatform, -1);
  EXPECT_STREQ(info.Coordinates, "local");
  EXPECT_STREQ(info.Description, "text");
  EXPECT_EQ(info.MajorVersion, 0);
}

TEST_F(QprFile, RefusesAValueLongerThanItsField) {
  const std::pair<const char*, int> fields[] = {
      {"SiteName", 50},    {"SiteDatabase", 255}, {"SiteDatabaseServerName", 80},
      {"ProjectName", 50}, {"DataGroupName", 50}, {"Coordinates", 19},
      {"Description", 128}};
  for (const auto& [name, longest] : fields) {
    const auto size = static_cast<std::size_t>(longest);
    ASSERT_EQ(Load(property(name, std::string(size, 'x'))), 1) << name << failure_of(file);
    const QPRInfo before = info;
    EXPECT_EQ(Load(property(name, std::string(size + 1, 'y'))), 0) << name;
    EXPECT_EQ(failure_of(file), std::string(name) + " has " + std::to_string(longest + 1) +
                                    " bytes, it may have " + std::to_string(longest));
    EXPECT_EQ(std::memcmp(&info, &before, sizeof info), 0) << name << ": the record is unchanged";
  }
}

TEST_F(QprFile, NeedsAFolderInAFolder) {
  const struct {
    const char *file, *native, *base, *database;
  } cases[] = {
      {"C:\\Projects\\Pit1\\a.qpr", "c/Projects/Pit1/a.qpr", "C:\\Projects", "C:\\Projects\\Pit1\\s.mdb"},
      {"C:\\Pit1\\a.qpr", "c/Pit1/a.qpr", "C:", "C:\\Pit1\\s.mdb"},
      {"C:\\a.qpr", "c/a.qpr", "old", "C:\\s.mdb"}};
  const ScopedVariable drives("ORX_DRIVES", folder.path().c_str());
  std::filesystem::create_directories(folder.path("c/Projects/Pit1"));
  std::filesystem::create_directories(folder.path("c/Pit1"));
  for (const auto& [path, native, base, database] : cases) {
    write_file(folder.path(native), "<a><PROJECT>" + property("SiteDatabasePlatform", "jet4") +
                                        property("SiteDatabase", "x\\s.mdb") + "</PROJECT></a>");
    file.SetFileName(path);
    std::strcpy(info.ProjectBasePath, "old");
    EXPECT_EQ(file.Load(), base != cases[2].base) << path;
    EXPECT_STREQ(info.ProjectBasePath, base) << path;
    EXPECT_STREQ(info.SiteDatabase, database) << path;
  }
  EXPECT_EQ(failure_of(file), "the path is too shallow to hold a project folder");

  const std::string name(255, 'x');
  file.SetFileName(folder.suite_path("Pit 1\\a.qpr").c_str());
  ASSERT_EQ(Load(property("SiteDatabasePlatform", "JET4") + property("SiteDatabase", name)), 1);
  EXPECT_EQ(info.SiteDatabase, name) << "stays where its new path would not fit";
}

TEST_F(QprFile, FailuresLeaveTheRecordAndSayWhy) {
  ASSERT_EQ(Load(property("SiteName", "kept")), 1);
  write_file(folder.path("Pit 1/a.qpr"), "<QPR/>");
  EXPECT_EQ(file.Load(), 0);
  EXPECT_EQ(failure_of(file), "there is no PROJECT element");
  std::filesystem::remove(folder.path("Pit 1/a.qpr"));
  EXPECT_EQ(file.Load(), 0);
  EXPECT_EQ(failure_of(file), "No such file or directory");
  EXPECT_STREQ(info.SiteName, "kept");
}

TEST_F(QprFile, AFailedSaveLeavesTheOldFileAndNoOther) {
  const std::string path = folder.path("Pit 1/a.qpr");
  write_file(path, "old");
  std::strcpy(info.SiteName, "\xFF");
  EXPECT_EQ(file.Save(), 0);
  EXPECT_EQ(failure_of(file).find("SiteName: "), 0u) << failure_of(file);
  std::memset(info.SiteName, 'x', sizeof info.SiteName);
  EXPECT_EQ(file.Save(), 0);
  EXPECT_EQ(failure_of(file), "SiteName: the text has no end");
  std::strcpy(info.SiteName, "good");

  rlimit limit{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limit), 0);
  const rlimit small{100, limit.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
  EXPECT_EQ(file.Save(), 0);
  setrlimit(RLIMIT_FSIZE, &limit);
  EXPECT_EQ(failure_of(file), "File too large");

  EXPECT_EQ(read_file(path), "old");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path("Pit 1")), {}), 1);
  EXPECT_EQ(file.Save(), 1) << failure_of(file);
}

TEST_F(QprFile, VerifyNamesTheFirstBrokenRule) {
  std::strcpy(info.SiteName, "s");
  std::strcpy(info.SiteDatabase, "d");
  std::strcpy(info.ProjectName, "p");
  std::strcpy(info.DataGroupName, "g");
  CStringA message = "kept";
  EXPECT_EQ(file.Verify(message), 1)
      << "a cleared platform is none of the catalogue, but no broken rule either";
  EXPECT_EQ(message, "kept");

  info.DataGroupName[0] = '\0';
  const std::pair<void (*)(QPRInfo&), const char*> breaks[] = {
      {[](QPRInfo&) {}, "The data group name cannot be empty"},
      {[](QPRInfo& i) { i.ProjectName[0] = '\0'; }, "The project name cannot be empty"},
      {[](QPRInfo& i) { i.SiteDatabasePlatform = 13; },
       "The site database server cannot be empty if database platform is 'SQL'"},
      {[](QPRInfo& i) { i.SiteDatabase[0] = '\0'; }, "The site database cannot be empty"},
      {[](QPRInfo& i) { i.SiteDatabasePlatform = -1; },
       "The database platform is invalid, it must be 'ACCESS 2016', 'SQL2019', 'SQL2017', 'SQL2016', "
       "'SQL2014', "
       "'SQL2012', 'SQL2008', 'SQL2005', 'SQL2000', 'SQL7', 'ACCESS 2007', 'JET4'."},
      {[](QPRInfo& i) { i.SiteName[0] = '\0'; }, "The site name cannot be empty."}};
  for (const auto& [break_rule, expected] : breaks) {
    break_rule(info);
    EXPECT_EQ(file.Verify(message), 0);
    EXPECT_EQ(message, expected);
  }
}

TEST_F(QprFile, VersionsCompareByMajorAndMinor) {
  const int cases[][4] = {{0, 0, 0, enProjectVersionOlder},   {6, 6, 99, enProjectVersionOlder},
                          {5, 9, 0, enProjectVersionOlder},   {6, 7, -1, enProjectVersionCurrent},
                          {6, 7, 9, enProjectVersionCurrent}, {6, 8, 0, enProjectVersionNewer},
                          {7, 0, 0, enProjectVersionNewer}};
  for (const auto& [major, minor, release, verdict] : cases) {
    info.MajorVersion = major;
    info.MinorVersion = minor;
    info.ReleaseVersion = release;
    EXPECT_EQ(file.VerifyProjectVersion(), verdict) << major << '.' << minor;
  }
  file.ProjectConversionUpgradeCompleted();
  EXPECT_EQ(info.MajorVersion * 100 + info.MinorVersion * 10 + info.ReleaseVersion, 670);
}

TEST_F(QprFile, CopiesTakeRecordAndFileName) {
  std::strcpy(info.SiteName, "s");
  CQPRFile other;
  other.CopyFrom(&file);
  other.CopyFrom(nullptr);
  other.CopyFrom(&other);
  file.Clear();
  EXPECT_STREQ(file.GetFileName(), "");
  EXPECT_STREQ(CQPRFile(other).GetQPRInfo()->SiteName, "s");
  EXPECT_EQ(other.GetFileName(), folder.suite_path("Pit 1\\a.qpr"));
}

}  // namespace
}  // namespace orx::testing
