#include <orx/platform/paths.h>

#include <gtest/gtest.h>
#include <tests/support/environment.h>

namespace fs = std::filesystem;
using namespace orx::platform;
using namespace orx::testing;

TEST(SystemPath, IsTheSystemsFormOfASuitePath) {
  const ScopedVariable drives("ORX_DRIVES", "/drives");
  const char* const cases[][2] = {
      {"C:\\Projects\\pit1.qpr", "/drives/c/Projects/pit1.qpr"},
      {"C:pit1.qpr", "/drives/c/pit1.qpr"},  // a drive has no current directory of its own
      {"\\\\Server\\share\\pit1.qpr", "/drives/unc/Server/share/pit1.qpr"},
      {"\\\\", "//"},  // names no server
      {"\\home\\ann\\pit1.qpr", "/home/ann/pit1.qpr"},
      {"/srv/public\\suite", "/srv/public/suite"},  // a folder of the system, continued by the suite
  };
  for (const auto& [path, expected] : cases) EXPECT_EQ(system_path(path), expected) << path;
}

TEST(SystemPath, FindsTheDriveFolder) {
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

TEST(SuitePath, IsTheSuitesFormOfANativePath) {
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
