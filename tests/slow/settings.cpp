// The store of settings under many writers, and under kills. Eight processes write a thousand values each at
// once: all of them have to be there. Processes that change settings are killed at random moments, two
// hundred times: what they had reported as done has to be done, nothing may be done by halves, and the
// database has to be sound.
#include <orx/settings/registry.h>

#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr int kWriters = 8;
constexpr int kValuesOfWriter = 1000;
constexpr int kKills = 200;
constexpr int kGroup = 10;  // values in a key; then the key before it is deleted
constexpr unsigned kSeed = 20'261;
constexpr int kLongestLife = 80'000;  // microseconds

void require(bool holds, const std::string& what) {
  if (!holds) throw std::runtime_error(what);
}

// Of unequal length, and large ones among them, which take long enough to be killed at.
std::string bytes_of(int n) {
  const auto size = static_cast<std::size_t>(n) * 997 % (n % 5 == 0 ? 400'000 : 1500);
  return std::string(size, static_cast<char>(n));
}

int write_value(const std::string& key, int n, const std::string& bytes) {
  return hvk_RegWriteBinary(key.c_str(), "all", nullptr, nullptr, std::to_string(n).c_str(), bytes.data(),
                            static_cast<int>(bytes.size()));
}

bool has_value(const std::string& key, int n, const std::string& bytes) {
  DWORD size = 0;
  HKEY opened = nullptr;
  const std::string path = "Software\\Halvark Software\\TESSEL\\6.9.1\\" + key + "\\all";
  if (RegOpenKeyExA(HKEY_CURRENT_USER, path.c_str(), 0, KEY_READ, &opened) != ERROR_SUCCESS) return false;
  std::string stored(bytes.size() + 1, '\0');
  size = static_cast<DWORD>(stored.size());
  const LSTATUS status = RegQueryValueExA(opened, std::to_string(n).c_str(), nullptr, nullptr,
                                          reinterpret_cast<BYTE*>(stored.data()), &size);
  RegCloseKey(opened);
  stored.resize(size);
  require(status == ERROR_FILE_NOT_FOUND || stored == bytes, "value " + std::to_string(n) + " is another");
  return status == ERROR_SUCCESS;
}

void check_database(const std::string& file) {
  sqlite3* database = nullptr;
  std::string found;
  const auto add = [](void* text, int, char** columns, char**) {
    *static_cast<std::string*>(text) += columns[0] != nullptr ? columns[0] : "null";
    return 0;
  };
  sqlite3_open_v2(file.c_str(), &database, SQLITE_OPEN_READWRITE, nullptr);
  const int error =
      sqlite3_exec(database, "PRAGMA integrity_check; PRAGMA foreign_key_check", add, &found, nullptr);
  sqlite3_close(database);
  require(error == SQLITE_OK && found == "ok", sqlite3_errstr(error) + (": " + found));
}

std::string writer_key(int n) { return n % 2 == 0 ? "shared" : "own " + std::to_string(n / kValuesOfWriter); }

void write_at_once() {
  std::vector<pid_t> writers;
  for (int writer = 0; writer < kWriters; ++writer) {
    writers.push_back(fork());
    if (writers.back() != 0) continue;
    int failed = 0;
    for (int n = writer * kValuesOfWriter; n < (writer + 1) * kValuesOfWriter; ++n) {
      if (write_value(writer_key(n), n, bytes_of(n).substr(0, 2000)) != 0) ++failed;
    }
    _exit(failed == 0 ? 0 : 1);
  }
  for (const pid_t writer : writers) {
    int status = -1;
    require(waitpid(writer, &status, 0) == writer && status == 0, "a process could not write");
  }
  for (int n = 0; n < kWriters * kValuesOfWriter; ++n) {
    require(has_value(writer_key(n), n, bytes_of(n).substr(0, 2000)),
            "value " + std::to_string(n) + " is lost");
  }
}

std::string group_key(int n) { return "group " + std::to_string(n / kGroup); }

[[noreturn]] void change_and_report(int first, int report) {
  for (int n = first;; ++n) {
    if (write_value(group_key(n), n, bytes_of(n)) != 0) _exit(1);
    const bool is_end = n % kGroup == kGroup - 1 && n >= kGroup;
    const bool is_deleted = is_end && hvk_RegSHDeleteKey(nullptr, group_key(n - kGroup).c_str()) == 0;
    // The first change may have been made already, by the process that was killed.
    if (is_end && !is_deleted && n != first) _exit(1);
    if (write(report, &n, sizeof n) != sizeof n) _exit(1);
  }
}

// Makes changes from the n-th on until it is killed; the last that was reported.
int changed_until_killed(int n, std::chrono::microseconds life) {
  int report[2];
  require(pipe(report) == 0, "no pipe");
  const pid_t writer = fork();
  if (writer == 0) change_and_report(n, report[1]);
  close(report[1]);
  std::this_thread::sleep_for(life);
  kill(writer, SIGKILL);
  int status = 0;
  require(waitpid(writer, &status, 0) == writer && WIFSIGNALED(status), "a change failed");
  int last = n - 1;
  while (read(report[0], &n, sizeof n) == sizeof n) last = n;
  close(report[0]);
  return last;
}

// The change after the last reported one may be there, too.
void check_changes(int last) {
  const int first_kept = std::max(0, (last + 1) / kGroup - 1) * kGroup;
  for (int n = 0; n <= last; ++n) {
    const bool may_be_gone = n < first_kept + ((last + 2) % kGroup == 0 ? kGroup : 0);
    const bool is_there = has_value(group_key(n), n, bytes_of(n));
    require(is_there || may_be_gone, "change " + std::to_string(n) + " is lost");
    require(!is_there || n >= first_kept, "group of " + std::to_string(n) + " was not deleted");
  }
  has_value(group_key(last + 1), last + 1, bytes_of(last + 1));
}

int survive_kills(const std::string& file) {
  std::mt19937 random(kSeed);
  std::uniform_int_distribution<int> life(0, kLongestLife);
  int last = -1;
  for (int i = 0; i < kKills; ++i) {
    last = changed_until_killed(last + 1, std::chrono::microseconds(life(random)));
    check_changes(last);
    check_database(file);
  }
  return last + 1;
}

}  // namespace

int main() {
  std::string folder = std::filesystem::temp_directory_path() / "orx_settings_XXXXXX";
  if (mkdtemp(folder.data()) == nullptr) return 2;
  const std::string file = folder + "/registry.db";
  setenv("ORX_USER_REGISTRY", file.c_str(), 1);
  int result = 0;
  try {
    write_at_once();
    check_database(file);
    const int changes = survive_kills(file);
    std::printf("settings, seed %u: %d values of %d processes, %d changes through %d kills, none lost\n",
                kSeed, kWriters * kValuesOfWriter, kWriters, changes, kKills);
  } catch (const std::exception& failure) {
    std::printf("settings, seed %u: FAILED: %s\n", kSeed, failure.what());
    result = 1;
  }
  std::filesystem::remove_all(folder);
  return result;
}
