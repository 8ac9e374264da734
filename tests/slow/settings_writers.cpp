// Eight processes write a thousand values each at once, below keys of their own and keys that all make: none
// may get lost.
#include <orx/settings/registry.h>

#include "settings_store.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>
#include <vector>

namespace {

using namespace orx::testing;

constexpr int kWriters = 8;
constexpr int kValues = 1000;
constexpr char kProductKey[] = "Halvark Software\\TESSEL\\6.9.1\\";

// One of the values of a writer: where it is, and how it is written.
struct Item {
  Item(int writer, int i) : number(writer * kValues + i), name("value " + std::to_string(number)) {
    const std::string own = "writer " + std::to_string(writer);
    key = i % 2 == 0 ? own : "all";
    sub_key = "group " + std::to_string(i / 50);
    bytes.resize(static_cast<std::size_t>(i) * 7 % 1500, static_cast<char>(number));
  }

  int Write() const {
    const auto write = [this](auto function, auto... value) {
      return function(key.c_str(), sub_key.c_str(), nullptr, nullptr, name.c_str(), value...);
    };
    switch (number % 5) {
      case 0:
        return write(hvk_RegWriteInt, number);
      case 1:
        return write(hvk_RegWriteDouble, number / 3.0);
      case 2:
        return write(hvk_RegWriteFloat, static_cast<float>(number) / 3);
      case 3:
        return write(hvk_RegInitString, name.c_str());
      default:
        return write(hvk_RegWriteBinary, bytes.data(), static_cast<int>(bytes.size()));
    }
  }

  void AddTo(Content& content) const {
    const double in_double = number / 3.0;
    const float in_float = static_cast<float>(number) / 3;
    const std::string values[] = {
        typed(REG_DWORD, &number, sizeof number), typed(REG_BINARY, &in_double, sizeof in_double),
        typed(REG_BINARY, &in_float, sizeof in_float), typed(REG_SZ, name.c_str(), name.size() + 1),
        typed(REG_BINARY, bytes.data(), bytes.size())};
    content[kProductKey + key + '\\'];
    content[kProductKey + key + '\\' + sub_key + '\\'];
    content[kProductKey + key + '\\' + sub_key + '\\' + name] = values[number % 5];
  }

  int number;
  std::string name;
  std::string key;
  std::string sub_key;
  std::string bytes;
};

// Tells how long its longest call took, in microseconds.
int write_all(int writer, int start, int report) {
  using namespace std::chrono;
  char ignored;
  if (read(start, &ignored, 1) != 0) return 1;
  microseconds::rep longest = 0;
  for (int i = 0; i < kValues; ++i) {
    const auto begin = steady_clock::now();
    if (Item(writer, i).Write() != 0) return 1;
    longest = std::max(longest, duration_cast<microseconds>(steady_clock::now() - begin).count());
  }
  return write(report, &longest, sizeof longest) == sizeof longest ? 0 : 1;
}

void run() {
  const StoreFolder folder;
  const std::string file = folder.use_store("registry.db");
  int start[2];
  int report[2];
  if (pipe(start) != 0 || pipe(report) != 0) throw std::runtime_error("no pipe");
  std::vector<pid_t> writers;
  for (int writer = 0; writer < kWriters; ++writer) {
    writers.push_back(fork());
    if (writers.back() == 0) {
      close(start[1]);
      _exit(write_all(writer, start[0], report[1]));
    }
  }
  const auto begin = std::chrono::steady_clock::now();
  close(start[1]);
  close(report[1]);
  int failures = 0;
  for (const pid_t writer : writers) {
    int status = 0;
    if (waitpid(writer, &status, 0) != writer || status != 0) ++failures;
  }
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
  if (failures != 0) throw std::runtime_error(std::to_string(failures) + " processes could not write");

  Content expected;
  for (const char* path : {"", "Halvark Software\\", "Halvark Software\\TESSEL\\", kProductKey})
    expected[path];
  for (int i = 0; i < kWriters * kValues; ++i) Item(i / kValues, i % kValues).AddTo(expected);
  if (content_of_store() != expected) throw std::runtime_error("not what was written");
  check_database(file);

  long longest = 0;
  for (long one; read(report[0], &one, sizeof one) == sizeof one;) longest = std::max(longest, one);
  std::printf("settings_writers: %d values by %d processes in %.1f s, the longest call %ld ms\n",
              kWriters * kValues, kWriters, took.count(), longest / 1000);
}

}  // namespace

int main() {
  try {
    run();
    return 0;
  } catch (const std::exception& failure) {
    std::printf("settings_writers: FAILED: %s\n", failure.what());
    return 1;
  }
}
