#include <orx/settings/registry.h>

#include <gtest/gtest.h>
#include <tests/support/process.h>
#include <tests/support/registry.h>

#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <thread>

namespace {

using namespace orx::testing;

class SettingsTest : public orx::testing::RegistryTest {
 protected:
  HKEY Key(const std::string& below_product = "") {
    return Made("Software\\Halvark Software\\TESSEL\\6.9.1\\" + below_product);
  }

  // The values of a key, each as "Name=1:616200 ": name, type and bytes.
  std::string Stored(const std::string& below_product = "") {
    const HKEY key = Key(below_product);
    std::string all;
    for (const std::string& name : values(key)) {
      BYTE bytes[64];
      DWORD type, size = sizeof bytes;
      RegQueryValueExA(key, name.c_str(), nullptr, &type, bytes, &size);
      all += name + '=' + std::to_string(type) + ':';
      for (DWORD i = 0; i < size; ++i) {
        constexpr char kDigits[] = "0123456789ABCDEF";
        all += {kDigits[bytes[i] >> 4], kDigits[bytes[i] & 15]};
      }
      all += ' ';
    }
    return all;
  }
};

TEST_F(SettingsTest, StoresEachTypeInItsFormat) {
  EXPECT_EQ(hvk_RegWriteInt("Süd", "b b", "c", "d", "Count", 5 - INT_MAX), 0);
  EXPECT_EQ(hvk_RegWriteString("Süd", "b b", "c", "d", "Name", "abc"), 0);
  EXPECT_EQ(hvk_RegWriteString("Süd", "b b", "c", "d", nullptr, ""), 0);
  EXPECT_EQ(hvk_RegWriteDouble("Süd", "b b", "c", "d", "Double", 0.1), 0);
  EXPECT_EQ(hvk_RegWriteFloat("Süd", "b b", "c", "d", "Float", -0.0F), 0);
  EXPECT_EQ(hvk_RegWriteBinary("Süd", "b b", "c", "d", "Raw", "\x01\x00\xFF", 3), 0);
  EXPECT_EQ(hvk_RegWrite("Süd", "b b", "c", "d", "Odd", nullptr, 0, -1), 0);
  EXPECT_EQ(hvk_RegWriteInitialize("Süd", "b b", "c", "d", "New", "ab", 2, 77), 0);
  EXPECT_EQ(Stored("Süd\\b b\\c\\d"),
            "=1:00 Count=4:06000080 Double=3:9A9999999999B93F Float=3:00000080 Name=1:61626300 New=77:6162 "
            "Odd=4294967295: Raw=3:0100FF ");
  int count = 0;
  double number = 0;
  float single = 0;
  char name[4] = {}, raw[] = {'#', '#', '#', '#'};
  EXPECT_EQ(hvk_RegReadInt("Süd", "b b", "c", "d", "COUNT", &count), 0);
  EXPECT_EQ(hvk_RegReadDouble("Süd", "b b", "c", "d", "Double", &number), 0);
  EXPECT_EQ(hvk_RegReadFloat("Süd", "b b", "c", "d", "Float", &single), 0);
  EXPECT_EQ(hvk_RegReadString("Süd", "b b", "c", "d", "Name", name, 4), 0);
  EXPECT_EQ(hvk_RegReadBinary("Süd", "b b", "c", "d", "Raw", raw, 4), 0);
  EXPECT_TRUE(count == 5 - INT_MAX && number == 0.1 && single == 0 && std::signbit(single));
  EXPECT_EQ(std::string(name) + std::string(raw, 4), std::string("abc\x01\0\xFF#", 7));
}

TEST_F(SettingsTest, ReadingChecksSizeButNotType) {
  ASSERT_EQ(hvk_RegWriteString("A", nullptr, nullptr, nullptr, "Name", "a"), 0);
  int number = 0x11111111;
  EXPECT_EQ(hvk_RegReadInt("A", nullptr, nullptr, nullptr, "Name", &number), 0);
  EXPECT_EQ(number, 0x11110061) << "two bytes of four";
  EXPECT_EQ(hvk_RegReadInt("A", nullptr, nullptr, nullptr, "Name", nullptr), 0) << "only checks";
  char buffer[2] = "";
  EXPECT_EQ(hvk_RegReadString("A", nullptr, nullptr, nullptr, "Name", buffer, 1), -1) << "never cut";
  EXPECT_EQ(hvk_RegReadBinary("A", nullptr, nullptr, nullptr, "Name", buffer, -1), -1);
}

TEST_F(SettingsTest, FailedReadingAndOpeningLeaveNoKeys) {
  HKEY key = nullptr;
  int number = 7;
  ASSERT_EQ(hvk_RegWriteInt("Kept", nullptr, nullptr, nullptr, "x", 1), 0);
  EXPECT_EQ(hvk_RegReadInt("A", "B", nullptr, nullptr, "x", &number), -1);
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

TEST_F(SettingsTest, WritingSkipsEmptyLevels) {
  EXPECT_EQ(hvk_RegWriteInt("A", "", "B", nullptr, "x", 1), 0);
  EXPECT_EQ(hvk_RegWriteInt("", "C\\D", nullptr, "ignored", "x", 2), 0);
  EXPECT_EQ(Stored("A\\B") + Stored("C\\D"), "x=4:01000000 x=4:02000000 ");
  EXPECT_EQ(hvk_RegWriteInt("E", "\\F", nullptr, nullptr, "x", 1), -1);
  EXPECT_EQ(hvk_RegWriteString("G", nullptr, nullptr, nullptr, "x", nullptr), -1) << "a null text";
  EXPECT_EQ(hvk_RegWriteBinary("G", nullptr, nullptr, nullptr, "x", "abc", -1), -1);
  EXPECT_EQ(hvk_RegWriteInt("G", nullptr, nullptr, nullptr, std::string(16384, 'n').c_str(), 1), -1);
  EXPECT_EQ(sub_keys(Key()), (Names{"A", "C", "E", "G"})) << "levels made before a failure stay";
  EXPECT_EQ(Stored("G"), "");
}

TEST_F(SettingsTest, InitialisingKeepsExistingValues) {
  EXPECT_EQ(hvk_RegInitInt(nullptr, nullptr, nullptr, nullptr, "n", 1), 0);
  EXPECT_EQ(hvk_RegInitInt(nullptr, nullptr, nullptr, nullptr, "N", 2), 0);
  EXPECT_EQ(hvk_RegInitString("A", "", nullptr, nullptr, nullptr, "x"), 0);
  EXPECT_EQ(hvk_RegInitString("A", nullptr, nullptr, nullptr, "", nullptr), 0);
  EXPECT_EQ(hvk_RegInitString("A", nullptr, nullptr, nullptr, "other", nullptr), -1);
  EXPECT_EQ(Stored() + Stored("A"), "n=4:01000000 =1:7800 ");
}

TEST_F(SettingsTest, DeletesAKeyAloneOrWithItsSubKeys) {
  ASSERT_EQ(hvk_RegWriteInt("A", "B", "C", "D", "x", 1), 0);
  EXPECT_EQ(hvk_RegDeleteKey("A", "B"), -1) << "has sub-keys";
  EXPECT_EQ(hvk_RegDeleteKey("A", "b\\c\\d") + hvk_RegSHDeleteKey("A", "B"), 0);
  EXPECT_EQ(sub_keys(Key("A")), Names{});
  EXPECT_EQ(hvk_RegDeleteKey("New", "none"), -1);
  for (const char* key1 : {static_cast<const char*>(nullptr), "", "\\"}) {
    for (const char* name : {static_cast<const char*>(nullptr), "", "\\"}) {
      EXPECT_EQ(hvk_RegDeleteKey(key1, name) + hvk_RegSHDeleteKey(key1, name), -2);
    }
  }
  EXPECT_EQ(sub_keys(Key()), (Names{"A", "New"})) << "a missing key1 is created";
  ASSERT_EQ(hvk_RegWriteInt("New", "Sub", nullptr, nullptr, "x", 1), 0);
  EXPECT_EQ(hvk_RegDeleteKey("New", nullptr), -1);
  EXPECT_EQ(hvk_RegSHDeleteKey("New", nullptr), 0);
  EXPECT_EQ(sub_keys(Key("New")), Names{});
  EXPECT_EQ(hvk_RegDeleteKey(nullptr, "a"), 0);
  EXPECT_EQ(sub_keys(Key()), Names{"New"});
  EXPECT_EQ(hvk_RegDeleteKey("New", ""), 0);
  EXPECT_EQ(hvk_RegDeleteKey(nullptr, ""), -1) << "although nothing is below the product key";
}

TEST_F(SettingsTest, CallerClosesAnOpenedKey) {
  HKEY key = nullptr;
  ASSERT_EQ(hvk_RegOpenKey("A", "B", nullptr, nullptr, &key), 0);
  EXPECT_EQ(RegSetValueExA(key, "x", 0, REG_BINARY, nullptr, 0), ERROR_SUCCESS);
  EXPECT_EQ(Stored("A\\B"), "x=3: ");
  EXPECT_EQ(hvk_RegCloseKey(&key), 0);
  EXPECT_NE(key, nullptr);
  EXPECT_EQ(hvk_RegCloseKey(&key) + hvk_RegCloseKey(nullptr), -2);
}

TEST_F(SettingsTest, GetsTheFolderOfThePlottingProduct) {
  char folder[8] = "before";
  EXPECT_EQ(hvk_GetChartwrightInstallFolder(folder, sizeof folder), -1);
  EXPECT_STREQ(folder, "before") << "the buffer is unchanged";
  EXPECT_FALSE(std::filesystem::exists(folder_.path("etc"))) << "no file is created";
  const HKEY key = Made("SOFTWARE\\Halvark Software\\Chartwright", HKEY_LOCAL_MACHINE);
  using Row = std::tuple<std::string, int, int, const char*>;
  for (const auto& [value, capacity, result, expected] :
       {Row{std::string("C:\\chw", 7), 7, 0, "C:\\chw"}, Row{std::string("C:\\chw", 7), 6, -1, "before"},
        Row{std::string("C:\\chw", 7), -1, -1, "before"}, Row{std::string("", 1), 8, -1, ""},
        Row{"", 8, -1, ""}}) {
    const auto* bytes = reinterpret_cast<const BYTE*>(value.data());
    RegSetValueExA(key, "InstallFolder", 0, REG_SZ, bytes, static_cast<DWORD>(value.size()));
    std::strcpy(folder, "before");
    EXPECT_EQ(hvk_GetChartwrightInstallFolder(folder, capacity), result) << value << capacity;
    EXPECT_STREQ(folder, expected) << capacity;
  }
  EXPECT_EQ(hvk_GetChartwrightInstallFolder(nullptr, 8), -1);
}

TEST_F(SettingsTest, ChangeIsKeptCompletelyOrNotAtAll) {
  const auto change = [](void* result) {
    EXPECT_EQ(hvk_RegWriteInt("A", "B", nullptr, nullptr, "number", 7), 0);
    EXPECT_EQ(hvk_RegSHDeleteKey(nullptr, "old"), 0);
    int number = 0;
    EXPECT_EQ(hvk_RegReadInt("A", "B", nullptr, nullptr, "number", &number), 0);
    EXPECT_EQ(number, 7);
    return *static_cast<LSTATUS*>(result);
  };
  ASSERT_EQ(hvk_RegWriteInt("old", nullptr, nullptr, nullptr, "x", 1), 0);
  LSTATUS result = ERROR_BUSY;
  EXPECT_EQ(orx_registry_change(HKEY_CURRENT_USER, change, &result), ERROR_BUSY);
  EXPECT_EQ(sub_keys(Key()), Names{"old"});
  result = ERROR_SUCCESS;
  EXPECT_EQ(orx_registry_change(HKEY_CURRENT_USER, change, &result), ERROR_SUCCESS);
  EXPECT_EQ(sub_keys(Key()), Names{"A"});
  EXPECT_EQ(Stored("A\\B"), "number=4:07000000 ");
  HKEY undone = nullptr;
  const auto throws = [](void* key) -> LSTATUS {
    throw hvk_RegOpenKey("thrown", nullptr, nullptr, nullptr, static_cast<HKEY*>(key));
  };
  EXPECT_THROW(orx_registry_change(HKEY_CURRENT_USER, throws, &undone), int);
  EXPECT_NE(Key("A\\new"), nullptr);
  EXPECT_EQ(RegSetValueExA(undone, "x", 0, REG_SZ, nullptr, 0), ERROR_KEY_DELETED);
  EXPECT_EQ(RegCloseKey(undone), ERROR_SUCCESS);
  EXPECT_EQ(sub_keys(Key()), Names{"A"});
  EXPECT_EQ(orx_registry_change(HKEY_CURRENT_USER, nullptr, nullptr), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(orx_registry_change(nullptr, change, &result), ERROR_INVALID_HANDLE);
}

TEST_F(SettingsTest, FilesAreCreatedWithTheirPermissions) {
  const mode_t host_mask = umask(0);
  int number;
  EXPECT_EQ(hvk_RegReadInt(nullptr, nullptr, nullptr, nullptr, "x", &number), -1);
  umask(0077);
  EXPECT_NE(Made("SOFTWARE\\A", HKEY_LOCAL_MACHINE), nullptr);
  umask(host_mask);
  const std::pair<const char*, int> modes[] = {
      {"config", 0700}, {"config/user.db", 0600}, {"etc", 0755}, {"etc/machine.db", 0644}};
  for (const auto& [name, mode] : modes)
    EXPECT_EQ(static_cast<int>(std::filesystem::status(folder_.path(name)).permissions()), mode) << name;
  char file[3];
  EXPECT_EQ(orx_registry_file(HKEY_CURRENT_USER, file, sizeof file), -1);
  EXPECT_STREQ(file, "");
  char path[PATH_MAX];
  EXPECT_EQ(orx_registry_file(nullptr, path, sizeof path), -1) << "only a root has a file";
}

TEST_F(SettingsTest, FailuresAreReportedToTheDebugger) {
  const ScopedVariable output("ORX_DEBUG_OUTPUT", folder_.path("debug.txt").c_str());
  const std::string notes = folder_.path("notes.db");
  orx::testing::write_file(notes, "These are my notes.");
  int number;
  HKEY key = nullptr;
  {
    const ScopedVariable user("ORX_USER_REGISTRY", notes.c_str());
    EXPECT_EQ(hvk_RegWriteInt("A", nullptr, nullptr, nullptr, "x", 1), -1);
    EXPECT_EQ(hvk_RegReadInt("A", nullptr, nullptr, nullptr, "x", &number), -1);
    EXPECT_EQ(hvk_RegSHDeleteKey(nullptr, "A"), -1);
    const std::string reason = "Settings in " + notes + ": file is not a database\n";
    EXPECT_EQ(read_file(folder_.path("debug.txt")), reason + reason + reason) << "no value was queried";
    EXPECT_EQ(hvk_RegOpenKey("A", nullptr, nullptr, nullptr, &key), -1);
    EXPECT_TRUE(read_file(folder_.path("debug.txt")).ends_with("\nRegistry is corrupt.\r\n\n"));
    EXPECT_EQ(read_file(notes), "These are my notes.");
  }
  EXPECT_EQ(hvk_RegReadInt("A", nullptr, nullptr, nullptr, "x", &number), -1);
  EXPECT_TRUE(read_file(folder_.path("debug.txt")).ends_with("\nFile not found.\r\n\n"));
  EXPECT_EQ(hvk_RegWriteInt("A", nullptr, nullptr, nullptr, "x", 1), 0) << "another file is a store again";
}

TEST_F(SettingsTest, ReplacedStoreIsOpenedAgain) {
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

  const HKEY machine = Made("A", HKEY_LOCAL_MACHINE);
  std::filesystem::remove(folder_.path("etc/machine.db"));
  EXPECT_EQ(RegQueryValueExA(machine, "x", nullptr, nullptr, nullptr, nullptr), ERROR_KEY_DELETED);
}

TEST_F(SettingsTest, ForkedProcessUsesKeysOfItsParent) {
  ASSERT_EQ(hvk_RegWriteInt(nullptr, nullptr, nullptr, nullptr, "x", 1), 0);
  const HKEY key = Key();
  orx::testing::in_new_process([key] {
    EXPECT_EQ(RegSetValueExA(key, "y", 0, REG_SZ, nullptr, 0), ERROR_SUCCESS);
    EXPECT_EQ(hvk_RegWriteInt(nullptr, nullptr, nullptr, nullptr, "x", 2), 0);
  });
  EXPECT_EQ(RegDeleteValueA(key, "y"), ERROR_SUCCESS);
  EXPECT_EQ(Stored(), "x=4:02000000 ");
}

TEST_F(SettingsTest, ProcessEndsWhileAThreadChangesSettings) {
  orx::testing::in_new_process([] {
    alarm(20);  // kills the process if it waits for the thread
    const auto change = [](void*) -> LSTATUS {
      std::thread(std::exit, 0).detach();
      for (;;) pause();
    };
    orx_registry_change(HKEY_CURRENT_USER, change, nullptr);
  });
}

TEST_F(SettingsTest, CancelledThreadEndsAfterItsCall) {
  orx::testing::on_cancelled_thread([] { hvk_RegWriteInt("A", nullptr, nullptr, nullptr, "x", 1); });
  EXPECT_EQ(Stored("A"), "x=4:01000000 ");
}

}  // namespace
