#include <orx/platform/paths.h>

#include <gtest/gtest.h>
#include <orx/platform/file_system.h>
#include <orx/platform/shared_files.h>
#include <tests/support/environment.h>

namespace fs = std::filesystem;
using namespace orx::platform;
using namespace orx::testing;

TEST(SystemPath, ConvertsDrivesServersAndSeparators) {
  const ScopedVariable drives("ORX_DRIVES", "/drives");
  const char* const cases[][2] = {
      {"C:\\Projects\\pit1.qpr", "/drives/c/Projects/pit1.qpr"},
      {"C:pit1.qpr", "/drives/c/pit1.qpr"},  // a drive has no current directory of its own
      {"\\\\Server\\share\\pit1.qpr", "/drives/unc/Server/share/pit1.qpr"},
      {"\\\\", "//"},  // names no server
      {"\\\\?\\C:\\Projects\\pit1.qpr", "/drives/c/Projects/pit1.qpr"},
      {"\\\\?\\unc\\Server\\share\\pit1.qpr", "/drives/unc/Server/share/pit1.qpr"},
      {"C:/Projects/pit1.qpr", "/drives/c/Projects/pit1.qpr"},
      {"//home/ann", "//home/ann"},  // not a server of the drive folder
      {"\\home\\ann\\pit1.qpr", "/home/ann/pit1.qpr"},
      {"/srv/public\\suite", "/srv/public/suite"},  // a folder of the system, continued by the suite
  };
  for (const auto& [path, expected] : cases) EXPECT_EQ(system_path(path), expected) << path;
}

TEST(SystemPath, DriveFolderComesFromEnvironment) {
  const char* const cases[][3] = {
      {"/d", "/data", "/d/c"},
      {"", "/data", "/data/orx/drives/c"},
      {nullptr, "data", "/home/ann/.local/share/orx/drives/c"},  // relative: ignored
      {nullptr, nullptr, "/home/ann/.local/share/orx/drives/c"},
  };
  const ScopedVariable home("HOME", "/home/ann");
  for (const auto& [drives, data, expected] : cases) {
    const ScopedVariable first("ORX_DRIVES", drives), second("XDG_DATA_HOME", data);
    EXPECT_EQ(system_path("C:"), expected);
  }
}

TEST(SuitePath, IsAbsoluteWithoutDots) {
  const TempFolder folder;
  fs::create_directories(folder.path("real/sub"));
  fs::create_directory_symlink("real/sub", folder.path("link"));
  const fs::path before = fs::current_path();
  fs::current_path(folder.path());
  const std::string here = folder.suite_path();
  const std::string cases[][2] = {
      {"//home/.//ann/./x/", "\\home\\ann\\x"},
      {"/..", "\\"},
      {".", here},
      {"link/", here + "\\link"},         // a link is part of the name
      {"link/../a", here + "\\real\\a"},  // unless ".." follows it
      {"missing/../a", here + "\\a"},
      {"C:/x/../y", "C:/x/../y"},
      {"\\home\\..\\x", "\\home\\..\\x"},
      {"", ""},
  };
  for (const auto& [native, expected] : cases) EXPECT_EQ(suite_path(native.c_str()), expected) << native;
  fs::current_path(before);
}

TEST(DrivePath, FindsNamesInAnyLetterCase) {
  const TempFolder folder;
  const ScopedVariable drives("ORX_DRIVES", folder.path().c_str());
  fs::create_directories(folder.path("c/Süd/Pit"));
  fs::create_directories(folder.path("unc/Server/Share"));
  for (const char* name : {"c/Süd/Pit/a.qpr", "c/Süd/Pit/twice", "c/Süd/Pit/TWICE", "unc/Server/Share/b"})
    write_file(folder.path(name), "a");
  const std::pair<const char*, EntryKind> cases[] = {
      {"C:\\SÜD\\PIT\\A.QPR", EntryKind::kFile},  {"c:/süd/pit", EntryKind::kFolder},
      {"\\\\SERVER\\share\\B", EntryKind::kFile}, {"//server/share/b", EntryKind::kFile},
      {"C:\\Süd\\Pit\\twice", EntryKind::kFile},  {"C:\\Süd\\Pit\\Twice", EntryKind::kNone},
      {"C:\\Süd\\Pit\\none", EntryKind::kNone},   {"C:\\sud\\pit\\a.qpr", EntryKind::kNone}};
  for (const auto& [path, kind] : cases) EXPECT_EQ(entry_kind(path), kind) << path;
  EXPECT_EQ(entry_kind(folder.path("c/süd").c_str()), EntryKind::kNone)
      << "letter case matters to the system";
  EXPECT_EQ(existing_path("c:\\süd\\pit\\A.qpr"), folder.path("c/Süd/Pit/a.qpr"));
  EXPECT_EQ(existing_path("c:\\süd\\new\\A.qpr"), folder.path("c/Süd/new/A.qpr"));
  EXPECT_EQ(first_match_size("c:\\süd\\pit\\A*"), 1U);
  EXPECT_TRUE(append_to_log("c:\\süd\\pit\\A.qpr", "b") && append_to_log("c:\\süd\\pit\\log", "l"));
  EXPECT_FALSE(create_shared_folder("C:\\SÜD"));
  FileReplacement file;
  std::string reason;
  ASSERT_TRUE(file.Open("C:\\SÜD\\pit\\A.QPR", reason) && file.Write("new", 3, reason) && file.Commit(reason))
      << reason;
  EXPECT_EQ(read_file(folder.path("c/Süd/Pit/a.qpr")), "new") << "in its place, not beside it";
  EXPECT_FALSE(file.Open("C:\\Süd\\Pit\\Twice", reason));
  EXPECT_EQ(reason, "Two names differ only in letter case");
  EXPECT_TRUE(remove_file("C:\\SÜD\\pit\\A.QPR"));
  EXPECT_EQ(std::distance(fs::directory_iterator(folder.path("c/Süd/Pit")), {}), 3);
}
