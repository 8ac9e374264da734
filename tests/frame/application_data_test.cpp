#include <orx/frame/application_data.h>

#include <gtest/gtest.h>
#include <orx/frame/debug_log.h>
#include <orx/settings/registry.h>
#include <sys/resource.h>
#include <tests/support/process.h>
#include <tests/support/registry.h>

#include <tuple>
#include <utility>

namespace fs = std::filesystem;
using namespace orx::testing;

namespace {

constexpr char kBelowPublic[] = "\\Halvark\\TESSEL\\" ORX_PRODUCT_VERSION "\\";

class ApplicationData : public RegistryTest {
 protected:
  static std::string Found(const char* shared) {
    const ScopedVariable variable("PUBLIC", shared);
    CStringA path = "old";
    errno = 77;
    GetApplicationDataPathString(path);
    EXPECT_EQ(errno, 77);
    return path.GetString();
  }

  void Configure(const std::string& value, DWORD type) {
    const HKEY key = Made(ORX_PRODUCT_KEY "\\INSTALL_PARAMETERS", HKEY_LOCAL_MACHINE);
    const auto* data = reinterpret_cast<const BYTE*>(value.c_str());
    RegSetValueExA(key, "ConfigFolder", 0, type, data, static_cast<DWORD>(value.size() + 1));
  }

  const ScopedVariable drives_{"ORX_DRIVES", folder_.path().c_str()};
};

TEST_F(ApplicationData, IsCreatedBelowPublicFolder) {
  const std::string made = folder_.path("c/Halvark/TESSEL/" ORX_PRODUCT_VERSION);
  const std::pair<std::string, bool> cases[] = {
      {"C:", true}, {folder_.path("c"), true}, {"C:\\missing", false}};
  for (const auto& [shared, is_made] : cases) {
    fs::remove_all(folder_.path("c"));
    fs::create_directory(folder_.path("c"));
    in_new_process([&, &shared = shared, is_made = is_made] {
      EXPECT_EQ(Found(nullptr) + Found(""), "") << "a folder that is not found is not kept";
      EXPECT_EQ(Found(std::string(ORX_APPLICATION_DATA_PATH_SIZE + 1 - sizeof kBelowPublic, 'n').c_str()), "")
          << "too long";
      const std::string found = Found(shared.c_str());
      EXPECT_EQ(found, shared + kBelowPublic);
      EXPECT_EQ(fs::remove(made), is_made);
      EXPECT_EQ(Found("D:"), found) << "kept";
      EXPECT_FALSE(fs::exists(made) || fs::exists(folder_.path("c/missing")));
      for (const int size : {0, 3, ORX_APPLICATION_DATA_PATH_SIZE - 1}) {
        std::string buffer(static_cast<std::size_t>(size) + 2, '#');
        GetApplicationDataPath(buffer.data(), size);
        GetApplicationDataPath(buffer.data(), -1);
        EXPECT_EQ(buffer.c_str(), found.substr(0, static_cast<std::size_t>(size)));
        EXPECT_TRUE(buffer.ends_with('#')) << "the function wrote beyond the buffer";
      }
      GetApplicationDataPath(nullptr, ORX_APPLICATION_DATA_PATH_SIZE);
    });
  }
}

TEST_F(ApplicationData, ConfiguredFolderIsUsedUnchanged) {
  fs::create_directory(folder_.path("c"));
  const std::string of_public = std::string("C:") + kBelowPublic;
  const std::string longest = "X:" + std::string(ORX_APPLICATION_DATA_PATH_SIZE - 4, 'n');
  const std::tuple<std::string, DWORD, std::string> cases[] = {{"C:\\TESSEL", REG_SZ, "C:\\TESSEL"},
                                                               {"C:\\%OS%\\", REG_EXPAND_SZ, "C:\\%OS%\\"},
                                                               {longest, REG_BINARY, longest},
                                                               {longest + "n", REG_SZ, of_public},
                                                               {"", REG_SZ, ""}};
  for (const auto& [value, type, found] : cases) {
    in_new_process([&, &value = value, type = type, &found = found] {
      Configure(value, type);
      EXPECT_EQ(Found("C:"), found);
    });
  }
  for (const char* made : {"TESSEL", "%OS%", "Halvark/TESSEL/" ORX_PRODUCT_VERSION})
    EXPECT_TRUE(fs::is_directory(folder_.path("c") + "/" + made)) << made;
}

TEST_F(ApplicationData, IsLookedForAgainAfterRegistryFailure) {
  in_new_process([&] { Configure("C:\\TESSEL", REG_SZ); });
  in_new_process([&] {
    rlimit files;
    getrlimit(RLIMIT_NOFILE, &files);
    const rlimit none{0, files.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    EXPECT_EQ(Found("C:"), std::string("C:") + kBelowPublic);
    EXPECT_EQ(halvark_log_debug_write("lost"), -1);
    setrlimit(RLIMIT_NOFILE, &files);
    fs::create_directories(folder_.path("c/TESSEL"));
    EXPECT_EQ(halvark_log_debug_write("line"), 0);
    EXPECT_EQ(Found("C:"), "C:\\TESSEL");
  });
  EXPECT_EQ(read_file(folder_.path("c/TESSEL/" ORX_LOG_NAME)), "line\r\n");
}

}  // namespace
