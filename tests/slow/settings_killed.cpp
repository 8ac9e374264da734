// A process that changes settings is killed at random moments. Afterwards the store is as if the process had
// stopped after the last call that it reported, or after the next one: nothing reported is lost, and nothing
// is done by halves.
#include <orx/settings/registry.h>

#include "settings_store.h"

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <exception>
#include <random>
#include <thread>

namespace {

using namespace orx::testing;

constexpr int kKills = 200;
constexpr int kKillsOfOneStore = 10;
constexpr unsigned kSeed = 20'261;
constexpr int kLongestLife = 80'000;  // microseconds

// Takes long enough to be killed at it, and shows if it was done by halves.
int write_large(int n) {
  const std::string bytes(200'000 + static_cast<std::size_t>(n) * 997 % 300'000, static_cast<char>(n));
  return hvk_RegWriteBinary("large", nullptr, nullptr, nullptr, nullptr, bytes.data(),
                            static_cast<int>(bytes.size()));
}

// The n-th change. Of ten, one makes a key, four write to a tree, four replace values beside it, and one
// deletes the tree.
int change(int n) {
  const std::string name = std::to_string(n);
  const std::string tree = std::to_string(n / 10);
  HKEY key = nullptr;
  switch (n % 10) {
    case 0:
      return hvk_RegOpenKey("keys", name.c_str(), "a\\b", "c", &key) | hvk_RegCloseKey(&key);
    case 1:
    case 2:
    case 3:
    case 4:
      return hvk_RegWriteInt("trees", tree.c_str(), name.c_str(), "leaf", nullptr, n);
    case 5:
    case 6:
      return write_large(n);
    case 9:
      return hvk_RegSHDeleteKey("trees", tree.c_str());
    default:
      return hvk_RegWriteInt("counters", nullptr, nullptr, nullptr, n % 2 == 0 ? "even" : "odd", n);
  }
}

[[noreturn]] void change_and_report(int first, int report) {
  for (int n = first; change(n) == 0; ++n) {
    if (write(report, &n, sizeof n) != sizeof n) break;
  }
  _exit(1);
}

// Lets a process make changes from the n-th on until it is killed, and returns the last that it reported.
int changed_until_killed(int n, std::chrono::microseconds life) {
  int report[2];
  if (pipe(report) != 0) throw std::runtime_error("no pipe");
  const pid_t writer = fork();
  if (writer == 0) change_and_report(n, report[1]);
  close(report[1]);
  std::this_thread::sleep_for(life);
  kill(writer, SIGKILL);
  int status = 0;
  if (waitpid(writer, &status, 0) != writer || !WIFSIGNALED(status))
    throw std::runtime_error("a change failed");
  int last = n - 1;
  while (read(report[0], &n, sizeof n) == sizeof n) last = n;
  close(report[0]);
  return last;
}

// Two stores: in one, processes are killed; the other gets the same changes in peace.
class Pair {
 public:
  Pair(const StoreFolder& folder, int number)
      : folder_(folder),
        killed_("killed" + std::to_string(number)),
        peaceful_("peaceful" + std::to_string(number)) {}

  void Kill(std::chrono::microseconds life) {
    const std::string file = folder_.use_store(killed_);
    const int reported = changed_until_killed(changes_ + 1, life);
    const Content found = content_of_store();
    check_database(file);

    folder_.use_store(peaceful_);
    while (changes_ < reported) ChangeInPeace();
    if (found == content_of_store()) return;
    ChangeInPeace();
    if (found != content_of_store())
      throw std::runtime_error("not as after change " + std::to_string(reported));
  }

  int changes() const { return changes_; }

 private:
  void ChangeInPeace() {
    if (change(++changes_) != 0) throw std::runtime_error("a change failed in peace");
  }

  const StoreFolder& folder_;
  const std::string killed_;
  const std::string peaceful_;
  int changes_ = 0;
};

void run() {
  const StoreFolder folder;
  std::mt19937 random(kSeed);
  std::uniform_int_distribution<int> life(0, kLongestLife);
  int changes = 0;
  for (int store = 0; store < kKills / kKillsOfOneStore; ++store) {
    Pair pair(folder, store);
    for (int i = 0; i < kKillsOfOneStore; ++i) pair.Kill(std::chrono::microseconds(life(random)));
    changes += pair.changes();
  }
  std::printf("settings_killed: %d changes kept through %d kills, seed %u\n", changes, kKills, kSeed);
}

}  // namespace

int main() {
  try {
    run();
    return 0;
  } catch (const std::exception& failure) {
    std::printf("settings_killed: FAILED, seed %u: %s\n", kSeed, failure.what());
    return 1;
  }
}
