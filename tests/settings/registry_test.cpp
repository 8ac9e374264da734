#include <orx/settings/registry.h>

#include <gtest/gtest.h>
#include <tests/support/process.h>
#include <tests/support/registry.h>

#include <sys/stat.h>

#include <cfloat>
#include <climits>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <limits>
#include <string>

namespace {

using orx::testing::read_file;
using orx::testing::ScopedVariable;
using orx::testing::sub_keys;
using orx::testing::values;
using Names = std::vector<std::string>;

const std::string kProduct = "Software\\Halvark Software\\TESSEL\\6.9.1";

class SettingsTest : public orx::testing::RegistryTest {
 protected:
  // Null when there is no such key. Closed by the next one.
  HKEY Key(const std::string& below_product = "") {
    if (key_ != nullptr) RegCloseKey(key_);
    RegOpenKeyExA(HKEY_CURRENT_USER, (kProduct + '\\' + below_product).c_str(), 0, KEY_ALL_ACCESS, &key_);
    return key_;
  }

  // "1:616200" is the type and the bytes; empty when there is no such value.
  std::string Stored(const std::string& below_product, const char* name) {
    BYTE bytes[64];
    DWORD type = 0, size = sizeof bytes;
    if (RegQueryValueExA(Key(below_product), name, nullptr, &type, bytes, &size) != ERROR_SUCCESS) return "";
    std::string text = std::to_string(type) + ':';
    for (DWORD i = 0; i < size; ++i) {
      constexpr char kDigits[] = "0123456789ABCDEF";
      text += {kDigits[bytes[i] >> 4], kDigits[bytes[i] & 15]};
    }
    return text;
  }

  ~SettingsTest() override { RegCloseKey(key_); }

 private:
  HKEY key_ = nullptr;
};

#define LEVELS(count)                                                                        \
  (count) > 0 ? "Süd" : nullptr, (count) > 1 ? "b b" : nullptr, (count) > 2 ? "c" : nullptr, \
      (count) > 3 ? "d" : nullptr

TEST_F(SettingsTest, EveryTypeIsStoredInItsFormAtEveryDepth) {
  const char* const keys[] = {"", "Süd", "Süd\\b b", "Süd\\b b\\c", "Süd\\b b\\c\\d"};
  for (int depth = 0; depth <= 4; ++depth) {
    SCOPED_TRACE(depth);
    EXPECT_EQ(hvk_RegWriteInt(LEVELS(depth), "Count", 5 - INT_MAX), 0);
    EXPECT_EQ(hvk_RegWriteString(LEVELS(depth), "Name", "abc"), 0);
    EXPECT_EQ(hvk_RegWriteString(LEVELS(depth), nullptr, ""), 0);
    EXPECT_EQ(hvk_RegWriteDouble(LEVELS(depth), "Double", 0.1), 0);
    EXPECT_EQ(hvk_RegWriteFloat(LEVELS(depth), "Float", -0.0F), 0);
    EXPECT_EQ(hvk_RegWriteBinary(LEVELS(depth), "Raw", "\x01\x00\xFF", 3), 0);
    EXPECT_EQ(hvk_RegWrite(LEVELS(depth), "Odd", nullptr, 0, -1), 0);

    EXPECT_EQ(Stored(keys[depth], "Count"), "4:06000080");
    EXPECT_EQ(Stored(keys[depth], "name"), "1:61626300");
    EXPECT_EQ(Stored(keys[depth], ""), "1:00");
    EXPECT_EQ(Stored(keys[depth], "Double"), "3:9A9999999999B93F");
    EXPECT_EQ(Stored(keys[depth], "Float"), "3:00000080");
    EXPECT_EQ(Stored(keys[depth], "Raw"), "3:0100FF");
    EXPECT_EQ(Stored(keys[depth], "Odd"), "4294967295:");
    EXPECT_EQ(values(Key(keys[depth])), (Names{"", "Count", "Double", "Float", "Name", "Odd", "Raw"}));

    int count = 0;
    double number = 0;
    float single = 0;
    char name[4] = {};
    EXPECT_EQ(hvk_RegReadInt(LEVELS(depth), "COUNT", &count), 0);
    EXPECT_EQ(hvk_RegReadDouble(LEVELS(depth), "Double", &number), 0);
    EXPECT_EQ(hvk_RegReadFloat(LEVELS(depth), "Float", &single), 0);
    EXPECT_EQ(hvk_RegReadString(LEVELS(depth), "Name", name, 4), 0);
    EXPECT_EQ(count, 5 - INT_MAX);
    EXPECT_EQ(number, 0.1);
    EXPECT_TRUE(single == 0 && std::signbit(single));
    EXPECT_STREQ(name, "abc");
  }
  EXPECT_EQ(sub_keys(Key()), Names{"Süd"});
}

TEST_F(SettingsTest, ReadingAnswersBySizeAndNotByType) {
  ASSERT_EQ(hvk_RegWriteString("A", nullptr, nullptr, nullptr, "Name", "a"), 0);
  ASSERT_EQ(hvk_RegWrite("A", nullptr, nullptr, nullptr, "OpenEnd", "abcd", 3, REG_SZ), 0);
  ASSERT_EQ(hvk_RegWriteBinary("A", nullptr, nullptr, nullptr, "Empty", nullptr, 0), 0);
  int number = 0x11111111;
  EXPECT_EQ(hvk_RegReadInt("A", nullptr, nullptr, nullptr, "Name", &number), 0);
  EXPECT_EQ(number, 0x11110061) << "two bytes of four";
  EXPECT_EQ(hvk_RegReadInt("A", nullptr, nullptr, nullptr, "Empty", &number), 0);
  EXPECT_EQ(number, 0x11110061);
  EXPECT_EQ(hvk_RegReadInt("A", nullptr, nullptr, nullptr, "Name", nullptr), 0) << "asks whether it is there";
  char buffer[5] = "####";
  EXPECT_EQ(hvk_RegReadString("A", nullptr, nullptr, nullptr, "OpenEnd", buffer, 2), -1) << "never cut";
  EXPECT_EQ(hvk_RegReadString("A", nullptr, nullptr, nullptr, "OpenEnd", buffer, 3), 0);
  EXPECT_STREQ(buffer, "abc#");
  EXPECT_EQ(hvk_RegReadString("A", nullptr, nullptr, nullptr, "OpenEnd", buffer, 4), 0);
  EXPECT_STREQ(buffer, "abc") << "a NUL where there is room";
  EXPECT_EQ(hvk_RegReadBinary("A", nullptr, nullptr, nullptr, "Name", buffer, -1), -1);
}

TEST_F(SettingsTest, WhatFailsLeavesNoKeysBehind) {
  HKEY key = nullptr;
  int number = 7;
  ASSERT_EQ(hvk_RegWriteInt("Kept", nullptr, nullptr, nullptr, "x", 1), 0);
  EXPECT_EQ(hvk_RegReadInt("A", "B", nullptr, nullptr, "x", &number), -1);
  EXPECT_EQ(hvk_RegReadInt("A", "", nullptr, nullptr, "x", &number), -1);
  EXPECT_EQ(hvk_RegReadInt("Kept", "", nullptr, nullptr, "x", &number), -1);
  EXPECT_EQ(number, 7);
  EXPECT_EQ(hvk_RegOpenKey("Kept\\A\\\\B", "C", "", nullptr, &key), -1);
  EXPECT_EQ(hvk_RegOpenKey("A", std::string(256, 'x').c_str(), nullptr, nullptr, &key), -1);
  EXPECT_EQ(hvk_RegOpenKey("A", "\\B", nullptr, nullptr, &key), -1);
  EXPECT_EQ(hvk_RegOpenKey("A", nullptr, nullptr, nullptr, nullptr), -1);
  EXPECT_EQ(key, nullptr);
  EXPECT_EQ(sub_keys(Key()), Names{"Kept"});
  EXPECT_EQ(sub_keys(Key("Kept")), Names{});
}

TEST_F(SettingsTest, WritingTakesAnEmptyLevelForTheKeyBeforeIt) {
  EXPECT_EQ(hvk_RegWriteInt("A", "", "B", nullptr, "x", 1), 0);
  EXPECT_EQ(hvk_RegWriteInt("", "C\\D", nullptr, "ignored", "x", 2), 0);
  EXPECT_EQ(Stored("A\\B", "x"), "4:01000000");
  EXPECT_EQ(Stored("C\\D", "x"), "4:02000000");
  EXPECT_EQ(hvk_RegWriteInt("E", "\\F", nullptr, nullptr, "x", 1), -1);
  EXPECT_EQ(hvk_RegWriteString("G", nullptr, nullptr, nullptr, "x", nullptr), -1) << "one byte from nowhere";
  EXPECT_EQ(hvk_RegWriteBinary("G", nullptr, nullptr, nullptr, "x", "abc", -1), -1);
  EXPECT_EQ(hvk_RegWriteInt("G", nullptr, nullptr, nullptr, std::string(16384, 'n').c_str(), 1), -1);
  EXPECT_EQ(hvk_RegWriteInt("G", nullptr, nullptr, nullptr, "\xFC", 1), -1);
  EXPECT_EQ(sub_keys(Key()), (Names{"A", "C", "E", "G"})) << "levels made before a failure stay";
  EXPECT_EQ(values(Key("G")), Names{});
}

TEST_F(SettingsTest, LevelsHaveLimitsInCharacters) {
  const auto repeated = [](const char* text, int count) {
    std::string result;
    while (count-- > 0) result += text;
    return result;
  };
  const struct {
    std::string level;
    int result;
  } kRows[] = {
      {std::string(255, 'x'), 0},
      {std::string(256, 'x'), -1},
      {repeated("ü", 255), 0},
      {repeated("ü", 256), -1},
      {std::string(10'000, 'x'), -1},
      {"\xFC", -1},
      {"a/b:*?\"<>|%d\t\n", 0},
      {" ", 0},
      {repeated("k\\", 500), 0},
      {repeated("k\\", 5000), -1},
      {"..", 0},
      {"k\\\xFF", -1},
  };
  for (const auto& [level, result] : kRows) {
    EXPECT_EQ(hvk_RegWriteInt(level.c_str(), nullptr, nullptr, nullptr, "x", 3), result) << level;
    int number = 0;
    EXPECT_EQ(hvk_RegReadInt(level.c_str(), nullptr, nullptr, nullptr, "x", &number), result) << level;
    EXPECT_EQ(number, result == 0 ? 3 : 0) << level;
  }
}

TEST_F(SettingsTest, InitialisingKeepsWhatIsThere) {
  EXPECT_EQ(hvk_RegInitInt(nullptr, nullptr, nullptr, nullptr, "n", 1), 0);
  EXPECT_EQ(hvk_RegInitInt(nullptr, nullptr, nullptr, nullptr, "N", 2), 0);
  EXPECT_EQ(hvk_RegInitString("A", "", nullptr, nullptr, nullptr, "x"), 0);
  EXPECT_EQ(hvk_RegInitString("A", nullptr, nullptr, nullptr, "", nullptr), 0);
  EXPECT_EQ(hvk_RegInitString("A", nullptr, nullptr, nullptr, "other", nullptr), -1);
  EXPECT_EQ(hvk_RegWriteInitialize("A", nullptr, nullptr, nullptr, "raw", "ab", 2, 77), 0);
  EXPECT_EQ(Stored("", "n"), "4:01000000");
  EXPECT_EQ(Stored("A", ""), "1:7800");
  EXPECT_EQ(Stored("A", "raw"), "77:6162");
}

TEST_F(SettingsTest, KeysAreDeletedAloneOrWithAllBelow) {
  ASSERT_EQ(hvk_RegWriteInt("A", "B", "C", "D", "x", 1), 0);
  EXPECT_EQ(hvk_RegDeleteKey("A", "B"), -1) << "has sub-keys";
  EXPECT_EQ(hvk_RegDeleteKey("A", "b\\c\\d"), 0);
  EXPECT_EQ(hvk_RegDeleteKey("A", "B\\C\\D"), -1) << "gone";
  EXPECT_EQ(hvk_RegSHDeleteKey("A", "B"), 0);
  EXPECT_EQ(sub_keys(Key("A")), Names{});
  EXPECT_EQ(hvk_RegDeleteKey("New", "none"), -1);
  EXPECT_EQ(hvk_RegDeleteKey(nullptr, nullptr), -1);
  EXPECT_EQ(hvk_RegSHDeleteKey(nullptr, nullptr), -1);
  EXPECT_EQ(sub_keys(Key()), (Names{"A", "New"})) << "the key to delete from is made";
  EXPECT_EQ(hvk_RegDeleteKey(nullptr, "a"), 0);
  EXPECT_EQ(sub_keys(Key()), Names{"New"});
}

TEST_F(SettingsTest, AnOpenedKeyIsTheCallersToClose) {
  HKEY key = nullptr;
  ASSERT_EQ(hvk_RegOpenKey("A", "B", nullptr, nullptr, &key), 0);
  const HKEY opened = key;
  EXPECT_EQ(RegSetValueExA(key, "x", 0, REG_BINARY, nullptr, 0), ERROR_SUCCESS);
  EXPECT_EQ(Stored("A\\B", "x"), "3:");
  EXPECT_EQ(hvk_RegCloseKey(&key), 0);
  EXPECT_EQ(key, opened);
  EXPECT_EQ(hvk_RegCloseKey(&key), -1);
  EXPECT_EQ(hvk_RegCloseKey(nullptr), -1);
}

TEST_F(SettingsTest, ThePlottingProductIsFoundByItsFolder) {
  char folder[8] = "before";
  EXPECT_EQ(hvk_GetChartwrightInstallFolder(folder, sizeof folder), -1);
  EXPECT_STREQ(folder, "before") << "a default stays";
  EXPECT_FALSE(std::filesystem::exists(folder_.path("etc"))) << "asking makes nothing";
  HKEY key = nullptr;
  ASSERT_EQ(RegCreateKeyExA(HKEY_LOCAL_MACHINE, "SOFTWARE\\Halvark Software\\Chartwright", 0, nullptr, 0,
                            KEY_WRITE, nullptr, &key, nullptr),
            ERROR_SUCCESS);
  const struct {
    const char* bytes;
    DWORD size;
    int capacity;
    int result;
  } kRows[] = {
      {"C:\\chw", 7, 8, 0}, {"C:\\chw", 7, 7, 0}, {"C:\\chw", 7, 6, -1},
      {"", 1, 8, -1},       {"", 0, 8, -1},       {"C:\\chw", 7, -1, -1},
  };
  for (const auto& [bytes, size, capacity, result] : kRows) {
    RegSetValueExA(key, "InstallFolder", 0, REG_SZ, reinterpret_cast<const BYTE*>(bytes), size);
    std::strcpy(folder, "before");
    EXPECT_EQ(hvk_GetChartwrightInstallFolder(folder, capacity), result) << bytes << ' ' << capacity;
    EXPECT_EQ(std::strcmp(folder, bytes) == 0, result == 0 || *bytes == '\0') << folder;
  }
  EXPECT_EQ(hvk_GetChartwrightInstallFolder(nullptr, 8), -1);
  RegCloseKey(key);
}

struct Change {
  HKEY key;
  LSTATUS result;
};

TEST_F(SettingsTest, AChangeIsKeptAsAWholeOrNotAtAll) {
  const auto change = [](void* context) {
    const auto& [key, result] = *static_cast<Change*>(context);
    const BYTE data[] = {1, 2};
    EXPECT_EQ(RegSetValueExA(key, "raw", 0, REG_BINARY, data, sizeof data), ERROR_SUCCESS);
    EXPECT_EQ(hvk_RegWriteInt("A", "B", nullptr, nullptr, "number", 7), 0);
    EXPECT_EQ(hvk_RegSHDeleteKey(nullptr, "old"), 0);
    int number = 0;
    EXPECT_EQ(hvk_RegReadInt("A", "B", nullptr, nullptr, "number", &number), 0);
    EXPECT_EQ(number, 7);
    return result;
  };
  ASSERT_EQ(hvk_RegWriteInt("old", nullptr, nullptr, nullptr, "x", 1), 0);
  Change context{Key(), ERROR_BUSY};
  EXPECT_EQ(orx_registry_change(HKEY_CURRENT_USER, change, &context), ERROR_BUSY);
  EXPECT_EQ(sub_keys(context.key), Names{"old"});
  EXPECT_EQ(values(context.key), Names{});
  context.result = ERROR_SUCCESS;
  EXPECT_EQ(orx_registry_change(HKEY_CURRENT_USER, change, &context), ERROR_SUCCESS);
  EXPECT_EQ(sub_keys(context.key), Names{"A"});
  EXPECT_EQ(Stored("A\\B", "number"), "4:07000000");
  EXPECT_EQ(Stored("", "raw"), "3:0102");
  HKEY undone = nullptr;
  const auto throws = [](void* key) -> LSTATUS {
    throw hvk_RegOpenKey("thrown", nullptr, nullptr, nullptr, static_cast<HKEY*>(key));
  };
  EXPECT_THROW(orx_registry_change(HKEY_CURRENT_USER, throws, &undone), int);
  EXPECT_EQ(hvk_RegOpenKey("A", "new", nullptr, nullptr, &context.key), 0);
  EXPECT_EQ(RegSetValueExA(undone, "x", 0, REG_SZ, nullptr, 0), ERROR_KEY_DELETED) << "not the next one made";
  for (const HKEY key : {undone, context.key}) EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);
  EXPECT_EQ(sub_keys(Key()), Names{"A"});
  EXPECT_EQ(orx_registry_change(HKEY_CURRENT_USER, nullptr, nullptr), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(orx_registry_change(nullptr, change, &context), ERROR_INVALID_HANDLE);
}

mode_t mode_of(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 ? status.st_mode & 0777 : 0;
}

TEST_F(SettingsTest, FilesAreMadeOnFirstUseForTheirReaders) {
  const mode_t host_mask = umask(0);
  int number;
  EXPECT_EQ(hvk_RegReadInt(nullptr, nullptr, nullptr, nullptr, "x", &number), -1);
  umask(0077);
  HKEY key = nullptr;
  EXPECT_EQ(
      RegCreateKeyExA(HKEY_LOCAL_MACHINE, "SOFTWARE\\A", 0, nullptr, 0, KEY_WRITE, nullptr, &key, nullptr),
      0);
  RegCloseKey(key);
  umask(host_mask);
  EXPECT_EQ(mode_of(folder_.path("config")), 0700U);
  EXPECT_EQ(mode_of(folder_.path("config/user.db")), 0600U);
  EXPECT_EQ(mode_of(folder_.path("etc")), 0755U);
  EXPECT_EQ(mode_of(folder_.path("etc/machine.db")), 0644U);
  char file[4096];
  EXPECT_EQ(orx_registry_file(HKEY_LOCAL_MACHINE, file, sizeof file), 0);
  EXPECT_EQ(file, folder_.path("etc/machine.db"));
  EXPECT_EQ(orx_registry_file(HKEY_CURRENT_USER, file, 3), -1);
  EXPECT_STREQ(file, "");
}

TEST_F(SettingsTest, AFileThatIsNoStoreIsTheOnlyOneThatFails) {
  const ScopedVariable output("ORX_DEBUG_OUTPUT", folder_.path("debug.txt").c_str());
  orx::testing::write_file(folder_.path("notes.db"), "These are my notes.");
  {
    const ScopedVariable user("ORX_USER_REGISTRY", folder_.path("notes.db").c_str());
    int number;
    HKEY key = nullptr;
    EXPECT_EQ(hvk_RegWriteInt("A", nullptr, nullptr, nullptr, "x", 1), -1);
    EXPECT_NE(read_file(folder_.path("debug.txt")).find("notes.db: file is not a database\n"),
              std::string::npos);
    EXPECT_EQ(hvk_RegReadInt("A", nullptr, nullptr, nullptr, "x", &number), -1);
    EXPECT_EQ(hvk_RegInitInt("A", nullptr, nullptr, nullptr, "x", 1), -1);
    EXPECT_EQ(hvk_RegOpenKey("A", nullptr, nullptr, nullptr, &key), -1);
    EXPECT_EQ(hvk_RegSHDeleteKey(nullptr, "A"), -1);
    EXPECT_EQ(read_file(folder_.path("notes.db")), "These are my notes.");
  }
  EXPECT_EQ(hvk_RegWriteInt("A", nullptr, nullptr, nullptr, "x", 1), 0);
}

TEST_F(SettingsTest, FailedReadsAreToldToTheDebugger) {
  const ScopedVariable output("ORX_DEBUG_OUTPUT", folder_.path("debug.txt").c_str());
  int number;
  hvk_RegReadInt("A", nullptr, nullptr, nullptr, "x", &number);
  EXPECT_EQ(read_file(folder_.path("debug.txt")), "File not found.\r\n\n");
}

TEST_F(SettingsTest, AStoreThatWasReplacedIsOpenedAnew) {
  ASSERT_EQ(hvk_RegWriteInt(nullptr, nullptr, nullptr, nullptr, "x", 1), 0);
  const HKEY stale = Key();
  std::filesystem::rename(folder_.path("config/user.db"), folder_.path("saved.db"));
  int number = 0;
  EXPECT_EQ(hvk_RegReadInt(nullptr, nullptr, nullptr, nullptr, "x", &number), -1);
  EXPECT_EQ(hvk_RegWriteInt(nullptr, nullptr, nullptr, nullptr, "x", 2), 0);
  EXPECT_EQ(RegSetValueExA(stale, "x", 0, REG_DWORD, nullptr, 0), ERROR_KEY_DELETED);
  std::filesystem::rename(folder_.path("saved.db"), folder_.path("config/user.db"));
  EXPECT_EQ(hvk_RegReadInt(nullptr, nullptr, nullptr, nullptr, "x", &number), 0);
  EXPECT_EQ(number, 1);

  HKEY machine = nullptr;
  RegCreateKeyExA(HKEY_LOCAL_MACHINE, "A", 0, nullptr, 0, KEY_READ, nullptr, &machine, nullptr);
  std::filesystem::remove(folder_.path("etc/machine.db"));
  EXPECT_EQ(RegQueryValueExA(machine, "x", nullptr, nullptr, nullptr, nullptr), ERROR_KEY_DELETED);
  RegCloseKey(machine);
}

TEST_F(SettingsTest, AForkedProcessGoesOnWithTheKeysOfItsParent) {
  ASSERT_EQ(hvk_RegWriteInt(nullptr, nullptr, nullptr, nullptr, "x", 1), 0);
  const HKEY key = Key();
  orx::testing::in_new_process([key] {
    EXPECT_EQ(RegSetValueExA(key, "y", 0, REG_SZ, nullptr, 0), ERROR_SUCCESS);
    EXPECT_EQ(hvk_RegWriteInt(nullptr, nullptr, nullptr, nullptr, "x", 2), 0);
  });
  EXPECT_EQ(RegDeleteValueA(key, "y"), ERROR_SUCCESS);
  EXPECT_EQ(Stored("", "x"), "4:02000000");
}

TEST_F(SettingsTest, LargeValuesComeBackWhole) {
  const std::string large(64 << 20, '\xA5');
  ASSERT_EQ(
      hvk_RegWriteBinary("A", nullptr, nullptr, nullptr, "x", large.data(), static_cast<int>(large.size())),
      0);
  std::string back(large.size(), '\0');
  ASSERT_EQ(
      hvk_RegReadBinary("A", nullptr, nullptr, nullptr, "x", back.data(), static_cast<int>(back.size())), 0);
  EXPECT_TRUE(back == large);
}

}  // namespace
