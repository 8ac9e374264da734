#include <orx/settings/registry.h>

#include <gtest/gtest.h>
#include <orx/platform/posix/registry/database.h>
#include <tests/support/registry.h>

#include <cstring>
#include <filesystem>
#include <functional>
#include <utility>

namespace {

// The file of the user's settings, opened by a second connection as another program opens it.
class StoreTest : public orx::testing::RegistryTest {
 protected:
  StoreTest() { orx::platform::registry_busy_timeout_ms = 20; }
  ~StoreTest() override {
    sqlite3_close(file_);
    orx::platform::registry_busy_timeout_ms = 10'000;
  }

  void OpenFile() {
    std::filesystem::create_directory(folder_.path("config"));
    ASSERT_EQ(sqlite3_open(folder_.path("config/user.db").c_str(), &file_), SQLITE_OK);
  }

  // The columns of all rows.
  std::string Run(const char* sql) {
    std::string found;
    const auto add = [](void* text, int count, char** columns, char**) {
      for (int i = 0; i < count; ++i) static_cast<std::string*>(text)->append(columns[i]).append(" ");
      return 0;
    };
    char* error = nullptr;
    EXPECT_EQ(sqlite3_exec(file_, sql, add, &found, &error), SQLITE_OK) << sql << ": " << error;
    return found;
  }

  sqlite3* file_ = nullptr;
};

// Reads a digit; a missing value is 0.
char read(const char* key1, const char* key2, const char* name) {
  char digit = '0';
  hvk_RegReadBinary(key1, key2, nullptr, nullptr, name, &digit, 1);
  return digit;
}

TEST_F(StoreTest, LockedStoreFailsAfterItsWaitingTime) {
  ASSERT_EQ(hvk_RegWriteInt("A", nullptr, nullptr, nullptr, "x", 1), 0);
  OpenFile();
  int number = 0;
  const std::tuple<const char*, int, int> kRows[] = {
      {"BEGIN EXCLUSIVE", -1, -1}, {"BEGIN IMMEDIATE", 0, -1}, {"BEGIN", 0, 0}};
  for (const auto& [lock, read, write] : kRows) {
    Run(lock);
    EXPECT_EQ(hvk_RegReadInt("A", nullptr, nullptr, nullptr, "x", &number), read) << lock;
    EXPECT_EQ(hvk_RegWriteInt("A", nullptr, nullptr, nullptr, "x", 2), write) << lock;
    EXPECT_EQ(hvk_RegInitInt("A", nullptr, nullptr, nullptr, "x", 3), read) << lock;
    Run("ROLLBACK");
  }
}

std::function<void()> before_writing;

// Calls `before_writing` once, when the connection begins a transaction that writes.
int trace(unsigned /*event*/, void* /*context*/, void* /*statement*/, void* sql) {
  if (before_writing && std::strcmp(static_cast<const char*>(sql), "BEGIN IMMEDIATE") == 0)
    std::exchange(before_writing, nullptr)();
  return 0;
}

int trace_connection(sqlite3* opened) { return sqlite3_trace_v2(opened, SQLITE_TRACE_STMT, trace, nullptr); }

TEST_F(StoreTest, InitialisingKeepsAValueThatIsWrittenBetweenItsChecks) {
  OpenFile();
  const auto extension = reinterpret_cast<void (*)()>(trace_connection);
  sqlite3_auto_extension(extension);
  EXPECT_EQ(hvk_RegWriteInt("A", nullptr, nullptr, nullptr, "y", 1), 0);
  before_writing = [this] { Run("UPDATE value SET name = 'x', folded = 'X'"); };
  EXPECT_EQ(hvk_RegInitInt("A", nullptr, nullptr, nullptr, "x", 2), 0);
  sqlite3_cancel_auto_extension(extension);
  EXPECT_FALSE(before_writing) << "the value was not written";
  int number = 0;
  EXPECT_EQ(hvk_RegReadInt("A", nullptr, nullptr, nullptr, "x", &number), 0);
  EXPECT_EQ(number, 1);
}

// Written by two versions of a program: one folded only ASCII capitals, the other all capitals.
constexpr char kOldStore[] = R"(
CREATE TABLE key (id INTEGER PRIMARY KEY, parent INTEGER REFERENCES key ON DELETE CASCADE, name TEXT NOT NULL,
  folded TEXT NOT NULL, UNIQUE (parent, folded));
CREATE TABLE value (key INTEGER NOT NULL REFERENCES key ON DELETE CASCADE, folded TEXT NOT NULL,
  name TEXT NOT NULL, type INTEGER NOT NULL, data BLOB NOT NULL, PRIMARY KEY (key, folded)) WITHOUT ROWID;
PRAGMA application_id = 0x4F525852;
PRAGMA user_version = 1;
INSERT INTO key VALUES (1, NULL, '', ''), (2, 1, 'Software', 'SOFTWARE'),
  (3, 2, 'Halvark Software', 'HALVARK SOFTWARE'), (4, 3, 'TESSEL', 'TESSEL'), (5, 4, '6.9.1', '6.9.1'),
  (6, 5, 'müller', 'MüLLER'), (7, 6, 'süd', 'SüD'), (8, 6, 'SÜD', 'SÜD'), (9, 6, 'West', 'WEST'),
  (10, 5, 'Müller', 'MÜLLER'), (11, 10, 'Süd', 'SÜD');
INSERT INTO value (key, name, folded, type, data) VALUES
  (10, 'Größe', 'GRÖßE', 3, '1'), (10, 'größe', 'GRößE', 3, '2'), (6, 'größe', 'GRößE', 3, '3'),
  (6, 'GRÖßE', 'GRÖßE', 3, '1'), (10, 'ä', 'ä', 3, '4'), (6, 'neu', 'NEU', 3, '5'),
  (7, 'x', 'X', 3, '6'), (8, 'y', 'Y', 3, '7'), (9, 'x', 'X', 3, '8');
)";

TEST_F(StoreTest, OlderStoreIsFoldedAgainOnce) {
  OpenFile();
  Run(kOldStore);
  Run("BEGIN IMMEDIATE");
  EXPECT_EQ(read("MÜLLER", nullptr, "Ä"), '4') << "reading needs no conversion";
  EXPECT_EQ(hvk_RegWriteBinary("MÜLLER", nullptr, nullptr, nullptr, "Ä", "5", 1), -1);
  Run("ROLLBACK");
  for (const char* key : {"Müller", "müller", "MÜLLER"}) {
    const std::string digits{read(key, nullptr, "größe"), read(key, nullptr, "Ä"), read(key, nullptr, "Neu"),
                             read(key, "Süd", "x"),       read(key, "süd", "y"),   read(key, "west", "x")};
    EXPECT_EQ(digits, "145678") << key;
  }
  EXPECT_EQ(Run("SELECT name FROM key WHERE parent IN (5, 10) ORDER BY id"), "West Müller Süd ");
  EXPECT_EQ(Run("SELECT key, name, data FROM replaced ORDER BY data"), "10 größe 2 10 größe 3 ");
  EXPECT_EQ(Run("PRAGMA integrity_check; PRAGMA foreign_key_check; PRAGMA user_version"), "ok 2 ");
}

}  // namespace
