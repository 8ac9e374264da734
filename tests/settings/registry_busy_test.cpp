#include <orx/settings/registry.h>

#include <gtest/gtest.h>
#include <orx/platform/posix/registry_database.h>
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

}  // namespace
