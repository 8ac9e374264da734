#include <orx/settings/registry.h>

#include <gtest/gtest.h>
#include <orx/platform/posix/registry_database.h>
#include <orx/platform/posix/utf8.h>
#include <tests/support/process.h>
#include <tests/support/registry.h>

namespace {

using BusySettingsTest = orx::testing::RegistryTest;

TEST_F(BusySettingsTest, AStoreThatIsLockedFailsWhenPatienceEnds) {
  orx::platform::registry_patience = 20;
  ASSERT_EQ(hvk_RegWriteInt("A", nullptr, nullptr, nullptr, "x", 1), 0);
  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open(folder_.path("config/user.db").c_str(), &other), SQLITE_OK);
  int number = 0;
  const std::tuple<const char*, int, int> kRows[] = {
      {"BEGIN EXCLUSIVE", -1, -1}, {"BEGIN IMMEDIATE", 0, -1}, {"SELECT 1", 0, 0}};
  for (const auto& [lock, read, write] : kRows) {
    sqlite3_exec(other, lock, nullptr, nullptr, nullptr);
    EXPECT_EQ(hvk_RegReadInt("A", nullptr, nullptr, nullptr, "x", &number), read) << lock;
    EXPECT_EQ(hvk_RegWriteInt("A", nullptr, nullptr, nullptr, "x", 2), write) << lock;
    EXPECT_EQ(hvk_RegInitInt("A", nullptr, nullptr, nullptr, "x", 3), read) << lock;
    sqlite3_exec(other, "ROLLBACK", nullptr, nullptr, nullptr);
  }
  sqlite3_close(other);
  orx::platform::registry_patience = 10'000;
}

// Before names were folded by tables of the program, a machine without locale data kept letters outside ASCII
// as they were.
TEST_F(BusySettingsTest, AnOlderStoreIsFoldedAnewOnce) {
  using orx::testing::in_new_process;
  // The children leave without closing the store that they share with this process.
  const auto write_store = [] {
    EXPECT_EQ(hvk_RegWriteInt("M\u00FCller", "Sub", nullptr, nullptr, "here", 1), 0);
    EXPECT_EQ(hvk_RegWriteInt("M\u00FCller", nullptr, nullptr, nullptr, "\u00FC", 2), 0);
    EXPECT_EQ(hvk_RegWriteInt("Other", nullptr, nullptr, nullptr, "there", 3), 0);
    EXPECT_EQ(hvk_RegWriteInt("Other", nullptr, nullptr, nullptr, "\u00DC", 4), 0);
    EXPECT_EQ(hvk_RegWriteInt("Other", "SUB", nullptr, nullptr, "there", 5), 0);
  };
  in_new_process(write_store, _exit);
  sqlite3* file = nullptr;
  ASSERT_EQ(sqlite3_open(folder_.path("config/user.db").c_str(), &file), SQLITE_OK);
  EXPECT_EQ(sqlite3_exec(file,
                         "UPDATE key SET name = 'm\u00FCller', folded = 'M\u00FCLLER' WHERE name = 'Other';"
                         "PRAGMA user_version = 1",
                         nullptr, nullptr, nullptr),
            SQLITE_OK);
  sqlite3_close(file);
  for (int round = 0; round < 2; ++round) {
    const auto read_store = [] {
      const auto number = [](const char* level, const char* name) {
        int value = 0;
        return hvk_RegReadInt("M\u00DCLLER", level, nullptr, nullptr, name, &value) == 0 ? value : 0;
      };
      EXPECT_EQ(number("sub", "here"), 1);
      EXPECT_EQ(number("sub", "there"), 5);
      EXPECT_EQ(number(nullptr, "there"), 3);
      EXPECT_EQ(number(nullptr, "\u00FC") + number(nullptr, "\u00FC (2)"), 6) << "neither is lost";
    };
    in_new_process(read_store, _exit);
  }
}

TEST(SettingsNames, FoldWithoutLocaleData) {
  orx::testing::in_new_process([] {
    setenv("LOCPATH", "/nowhere", 1);
    std::string folded;
    EXPECT_TRUE(orx::platform::utf8::to_upper("M\u00FCller \u0436 \u00DF", folded));
    EXPECT_EQ(folded, "M\u00DCLLER \u0416 \u00DF");
  });
}

}  // namespace
