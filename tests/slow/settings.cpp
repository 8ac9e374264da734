// The store of settings with many writers and with kills: a change that was reported is stored, a change is
// never stored in part, and the database is never damaged.
#include <orx/settings/registry.h>

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <tests/support/process.h>
#include <tests/support/registry.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <random>
#include <string>
#include <thread>
#include <vector>

using namespace orx::testing;

namespace {

constexpr int kWriters = 8;
constexpr int kValuesOfWriter = 1000;
constexpr int kKills = 200;
constexpr int kGroup = 10;  // values in a key; when a key is full, the previous key is deleted
constexpr std::chrono::microseconds kLongestLife(80'000);

// The values have different sizes. Every fifth may be so large that a kill often interrupts its write.
std::string bytes_of(int n) {
  const auto size = static_cast<std::size_t>(n) * 997 % (n % 5 == 0 ? 400'000 : 1500);
  return std::string(size, static_cast<char>(n));
}

int write_value(const std::string& key, int n, const std::string& bytes) {
  return hvk_RegWriteBinary(key.c_str(), "all", nullptr, nullptr, std::to_string(n).c_str(), bytes.data(),
                            static_cast<int>(bytes.size()));
}

bool has_value(const std::string& key, int n, const std::string& bytes) {
  std::string stored(bytes.size() + 1, '#');
  const int result = hvk_RegReadBinary(key.c_str(), "all", nullptr, nullptr, std::to_string(n).c_str(),
                                       stored.data(), static_cast<int>(stored.size()));
  EXPECT_TRUE(result != 0 || stored == bytes + '#') << "value " << n << " has wrong bytes";
  return result == 0;
}

std::string writer_key(int n) { return n % 2 == 0 ? "shared" : "own " + std::to_string(n / kValuesOfWriter); }

std::string group_key(int n) { return "group " + std::to_string(n / kGroup); }

[[noreturn]] void change_and_report(int first, int report) {
  for (int n = first;; ++n) {
    if (write_value(group_key(n), n, bytes_of(n)) != 0) _exit(1);
    const bool is_end = n % kGroup == kGroup - 1 && n >= kGroup;
    const bool is_deleted = is_end && hvk_RegSHDeleteKey(nullptr, group_key(n - kGroup).c_str()) == 0;
    // The killed process may have made the first change without reporting it.
    const bool has_failed = is_end && !is_deleted && n != first;
    if (has_failed || write(report, &n, sizeof n) != sizeof n) _exit(1);
  }
}

// Starts a process that makes changes from the n-th on, and kills it. Returns the last change that it
// reported.
int change_until_killed(int n, std::chrono::microseconds life) {
  int report[2];
  EXPECT_EQ(pipe(report), 0);
  const pid_t writer = start_process([&] { change_and_report(n, report[1]); });
  close(report[1]);
  std::this_thread::sleep_for(life);
  kill(writer, SIGKILL);
  int status = 0;
  EXPECT_TRUE(waitpid(writer, &status, 0) == writer && WIFSIGNALED(status)) << "a change failed";
  int last = n - 1;
  while (read(report[0], &n, sizeof n) == sizeof n) last = n;
  close(report[0]);
  return last;
}

// The change after the last reported one may be stored, too.
void check_changes(int last) {
  const int first_kept = std::max(0, (last + 1) / kGroup - 1) * kGroup;
  for (int n = 0; n <= last; ++n) {
    const bool may_be_gone = n < first_kept + ((last + 2) % kGroup == 0 ? kGroup : 0);
    const bool is_there = has_value(group_key(n), n, bytes_of(n));
    EXPECT_TRUE(is_there || may_be_gone) << "change " << n << " is lost";
    EXPECT_TRUE(!is_there || n >= first_kept) << "group of " << n << " was not deleted";
  }
  has_value(group_key(last + 1), last + 1, bytes_of(last + 1));
}

class SettingsTest : public RegistryTest {
 protected:
  void CheckDatabase() const {
    sqlite3* database = nullptr;
    std::string found;
    const auto add = [](void* text, int, char** columns, char**) {
      return static_cast<std::string*>(text)->append(columns[0]).empty() ? 1 : 0;
    };
    sqlite3_open(folder_.path("config/user.db").c_str(), &database);
    sqlite3_exec(database, "PRAGMA integrity_check; PRAGMA foreign_key_check", add, &found, nullptr);
    sqlite3_close(database);
    EXPECT_EQ(found, "ok");
  }
};

TEST_F(SettingsTest, ConcurrentWritesAreAllStored) {
  const auto short_bytes = [](int n) { return bytes_of(n).substr(0, 2000); };
  std::vector<pid_t> writers;
  for (int first = 0; first < kWriters * kValuesOfWriter; first += kValuesOfWriter) {
    writers.push_back(start_process([&] {
      for (int n = first; n < first + kValuesOfWriter; ++n)
        EXPECT_EQ(write_value(writer_key(n), n, short_bytes(n)), 0) << n;
    }));
  }
  for (const pid_t writer : writers) expect_success(writer);
  for (int n = 0; n < kWriters * kValuesOfWriter; ++n)
    EXPECT_TRUE(has_value(writer_key(n), n, short_bytes(n))) << n << " is lost";
  CheckDatabase();
}

TEST_F(SettingsTest, ReportedChangesSurviveKill) {
  std::mt19937 random(20'261);
  int last = -1;
  for (int i = 0; i < kKills && !HasFailure(); ++i) {
    last = change_until_killed(last + 1, std::chrono::microseconds(random() % kLongestLife.count()));
    check_changes(last);
    CheckDatabase();
  }
  std::printf("%d changes\n", last + 1);
}

}  // namespace
