#include <orx/projects/qpr_file.h>

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <string>

#include "tests/support/environment.h"
#include "tests/support/xml.h"

using namespace orx::testing;

namespace {

std::string property(const std::string& name, const std::string& value) {
  return "<PROPERTY NAME=\"" + name + "\" VALUE=\"" + value + "\"/>";
}

std::string fields_of(const QPRInfo& info) {
  CStringA all;
  all.Format("%s|%s|%d|%s|%s|%s|%s|%s|%s|%d.%d.%d", info.SiteName, info.SiteDatabase,
             info.SiteDatabasePlatform, info.SiteDatabaseServerName, info.ProjectName, info.DataGroupName,
             info.ProjectBasePath, info.Coordinates, info.Description, info.MajorVersion, info.MinorVersion,
             info.ReleaseVersion);
  return all.GetString();
}

class QprFile : public ::testing::Test {
 protected:
  QprFile() {
    std::filesystem::create_directory(folder.path("Pit 1"));
    file.SetFileName(folder.suite_path("Pit 1\\a.qpr").c_str());
  }

  int LoadText(const std::string& text) {
    write_file(path, text);
    return file.Load();
  }
  int Load(const std::string& properties) {
    return LoadText("<QPR><PROJECT>" + properties + "</PROJECT></QPR>");
  }

  const TempFolder folder;
  const std::string base = folder.suite_path(), path = folder.path("Pit 1/a.qpr");
  CQPRFile file;
  QPRInfo& info = *file.GetQPRInfo();
};

TEST_F(QprFile, SaveWritesPropertiesInOrder) {
  std::strcpy(info.SiteName, "A & \u00FC");
  std::strcpy(info.SiteDatabase, "D:\\s.mdb");
  info.SiteDatabasePlatform = 8;
  info.MinorVersion = -7;
  const std::string before = fields_of(info);
  ASSERT_EQ(file.Save(), 1) << failure_of(file);
  EXPECT_EQ(fields_of(info), before);
  const auto line = [](const char* name, const char* value) { return "\t\t" + property(name, value) + "\n"; };
  const std::string expected = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<QPR>\n\t<PROJECT>\n" +
                               line("SiteName", "A &amp; \u00FC") + line("SiteDatabase", "D:\\s.mdb") +
                               line("SiteDatabasePlatform", "ACCESS 2016") +
                               line("SiteDatabaseServerName", "") + line("ProjectName", "") +
                               line("DataGroupName", "") + line("Coordinates", "") + line("Description", "") +
                               line("MajorVersion", "0") + line("MinorVersion", "-7") +
                               line("ReleaseVersion", "0") + "\t</PROJECT>\n</QPR>\n";
  EXPECT_EQ(read_file(path), expected);
  std::strcpy(info.SiteName, "\xFF");
  EXPECT_EQ(file.Save(), 0);
  EXPECT_EQ(failure_of(file).find("SiteName: "), 0u) << failure_of(file);
  std::memset(info.SiteName, 'x', sizeof info.SiteName);
  EXPECT_EQ(file.Save(), 0);
  EXPECT_EQ(failure_of(file), "SiteName: the text has no NUL");
  EXPECT_EQ(read_file(path), expected);
  ASSERT_EQ(file.Load(), 1) << failure_of(file);
  EXPECT_EQ(fields_of(info), "A & \u00FC|" + base + "\\Pit 1\\s.mdb|8||||" + base + "|||0.-7.0")
      << "a JET database is in the folder of its project";
}

TEST_F(QprFile, LoadReadsPropertiesByNameWithoutLetterCase) {
  ASSERT_EQ(
      Load(property("sitename", "first") + property("SITENAME", "last") + property("Unknown", "x") +
           property("SiteDatabasePlatform", "sql server 2014") + property("SiteDatabase", "\\\\srv\\db") +
           property("MajorVersion", " +6x") + property("MinorVersion", "99999999999999999999") +
           property("ReleaseVersion", "-99999999999") +
           "<PROPERTY VALUE=\"x\"/><PROPERTY NAME=\"ProjectName\"/>" + property("Coordinates", "local") +
           property("Description", "text")),
      1)
      << failure_of(file);
  EXPECT_EQ(fields_of(info), "last|\\\\srv\\db|10||||" + base + "|local|text|6.2147483647.-2147483648");
  // The names of the other elements do not matter. The second load resets all properties except two.
  ASSERT_EQ(LoadText("<X><PROJECT/><Y>" + property("SiteDatabasePlatform", "dBase") + "</Y></X>"), 1);
  EXPECT_EQ(fields_of(info), "||-1||||" + base + "|local|text|0.0.0");
}

TEST_F(QprFile, LoadKeepsRecordWhenTextHasTooManyCharacters) {
  const std::tuple<const char*, int, char*> fields[] = {
      {"SiteName", ORX_SITE_NAME_LENGTH, info.SiteName},
      {"SiteDatabase", ORX_SITE_DATABASE_LENGTH, info.SiteDatabase},
      {"SiteDatabaseServerName", ORX_SERVER_NAME_LENGTH, info.SiteDatabaseServerName},
      {"ProjectName", ORX_PROJECT_NAME_LENGTH, info.ProjectName},
      {"DataGroupName", ORX_DATA_GROUP_NAME_LENGTH, info.DataGroupName},
      {"Coordinates", ORX_COORDINATES_LENGTH, info.Coordinates},
      {"Description", ORX_DESCRIPTION_LENGTH, info.Description}};
  for (const auto& [name, length, field] : fields) {
    for (const std::string character : {"x", "\u0416", "\u77FF", "\U00020000"}) {
      std::string value;
      for (int i = 0; i < length; ++i) value += character;
      ASSERT_EQ(Load(property(name, value)), 1) << name << failure_of(file);
      EXPECT_EQ(field, value);
      const std::string before = fields_of(info);
      const std::string reason = std::string(name) + " has " + std::to_string(length + 1) +
                                 " characters; the limit is " + std::to_string(length);
      EXPECT_EQ(Load(property("MajorVersion", "9") + property(name, value + "y")), 0);
      EXPECT_EQ(failure_of(file), reason);
      EXPECT_EQ(fields_of(info), before) << "the record is unchanged";
    }
    const std::string saved = read_file(path), too_long(static_cast<std::size_t>(length) + 1, 'z');
    std::strcpy(field, too_long.c_str());
    EXPECT_EQ(file.Save(), 0) << "Load would refuse it";
    EXPECT_EQ(read_file(path), saved);
    field[0] = '\0';
  }
  EXPECT_EQ(LoadText("<QPR/>"), 0);
  EXPECT_EQ(failure_of(file), "there is no PROJECT element");
}

TEST_F(QprFile, LoadFailsWithoutBasePathAndFillsRecord) {
  const ScopedVariable drives("ORX_DRIVES", folder.path().c_str());
  std::filesystem::create_directories(folder.path("c/Projects/Pit1"));
  const std::tuple<std::string, int, const char*> cases[] = {
      {"C:\\Projects\\Pit1", 1, "C:\\Projects"}, {"C:\\Projects", 1, "C:"}, {"C:", 0, "C:"}};
  for (const auto& [file_folder, loaded, expected_base] : cases) {
    file.SetFileName((file_folder + "\\a.qpr").c_str());
    std::strcpy(info.SiteDatabase, "x\\s.mdb");
    info.SiteDatabasePlatform = 3;
    ASSERT_EQ(file.Save(), 1) << failure_of(file);
    EXPECT_EQ(file.Load(), loaded) << file_folder;
    EXPECT_STREQ(info.ProjectBasePath, expected_base);
    EXPECT_EQ(info.SiteDatabase, file_folder + "\\s.mdb");
  }
  EXPECT_EQ(failure_of(file), "the path is too shallow to hold a project folder");

  const std::string name(ORX_SITE_DATABASE_LENGTH, 'x');
  file.SetFileName((base + "\\Pit 1\\a.qpr").c_str());
  ASSERT_EQ(Load(property("SiteDatabasePlatform", "JET4") + property("SiteDatabase", name)), 1);
  EXPECT_EQ(info.SiteDatabase, name) << "unchanged, since the new path would be too long";
  std::string deep = "Pit 1";
  for (int i = 0; i < 6; ++i) deep += '/' + std::string(250, '\x80');
  std::filesystem::create_directories(folder.path(deep));
  file.SetFileName(folder.suite_path(deep + "/a.qpr").c_str());
  EXPECT_FALSE(file.Save() && file.Load());
  EXPECT_EQ(failure_of(file), "the path is too long to hold a project folder");
}

TEST_F(QprFile, VerifyReportsFirstBrokenRule) {
  ASSERT_EQ(Load(property("SiteName", "s") + property("SiteDatabase", "d") + property("ProjectName", "p") +
                 property("DataGroupName", "g")),
            1);
  info.SiteDatabasePlatform = 0;
  CStringA message = "kept";
  EXPECT_EQ(file.Verify(message), 1) << "the platform of a cleared record breaks no rule";
  EXPECT_EQ(message, "kept");
  const std::tuple<char*, int, const char*> breaks[] = {
      {info.DataGroupName, 0, "The data group name cannot be empty"},
      {info.ProjectName, 8, "The project name cannot be empty"},
      {info.ProjectName, 13, "The site database server cannot be empty if database platform is 'SQL'"},
      {info.SiteDatabase, 13, "The site database cannot be empty"},
      {info.SiteDatabase, -1,
       "The database platform is invalid, it must be 'ACCESS 2016', 'SQL2019', 'SQL2017', 'SQL2016', "
       "'SQL2014', 'SQL2012', 'SQL2008', 'SQL2005', 'SQL2000', 'SQL7', 'ACCESS 2007', 'JET4'."},
      {info.SiteName, -1, "The site name cannot be empty."}};
  for (const auto& [emptied, platform, expected] : breaks) {
    emptied[0] = '\0';
    info.SiteDatabasePlatform = platform;
    EXPECT_EQ(file.Verify(message), 0);
    EXPECT_EQ(message, expected);
  }
}

TEST_F(QprFile, CopiesHaveRecordAndFileName) {
  std::strcpy(info.SiteName, "s");
  CQPRFile other;
  for (CQPRFile* source : {&file, &other, static_cast<CQPRFile*>(nullptr)}) other.CopyFrom(source);
  file.Clear();
  EXPECT_STREQ(file.GetFileName(), "");
  EXPECT_STREQ(CQPRFile(other).GetQPRInfo()->SiteName, "s");
  EXPECT_EQ(other.GetFileName(), base + "\\Pit 1\\a.qpr");
}

}  // namespace
