// Whether every line of eight processes that write to one log at once arrives, whole and in its process's
// order.
//
//   orx_slow_log_lines [LINES]    lines a process, 5000 unless said otherwise; exit status 0 when all is well
#include <orx/frame/debug_log.h>

#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

constexpr int kProcesses = 8;
constexpr std::size_t kLongestFilling = 12'000;  // pages of the file, and longer than what is formatted

// Its first character names the process.
std::string line_of(int process, int number) {
  const auto filling = static_cast<std::size_t>(number) * 7919 % kLongestFilling;
  std::string line = std::to_string(process) + ' ' + std::to_string(number) + ' ';
  line.append(filling, static_cast<char>('a' + (number + process) % 26));
  return line + '.';
}

[[noreturn]] void write_lines(int process, int lines) {
  for (int number = 0; number < lines; ++number) {
    const std::string line = line_of(process, number);
    const bool is_short = line.size() <= 4096;
    const int result =
        is_short ? halvark_log_debug_write_n("%s", line.c_str()) : halvark_log_debug_write(line.c_str());
    if (result != 0) _exit(1);
  }
  _exit(0);
}

bool write_all(int lines) {
  for (int process = 0; process < kProcesses; ++process) {
    const pid_t child = fork();
    if (child == 0) write_lines(process, lines);
    if (child < 0) std::perror("fork");
  }
  bool all_written = true;
  int status = 0;
  while (wait(&status) > 0) all_written = all_written && status == 0;
  return all_written;
}

}  // namespace

int main(int argc, char** argv) {
  const int lines = argc > 1 ? std::atoi(argv[1]) : 5000;
  std::string folder = std::filesystem::temp_directory_path() / "orx_log_XXXXXX";
  if (lines <= 0 || mkdtemp(folder.data()) == nullptr) return 2;
  const bool all_written = halvark_log_debug_init(folder.c_str()) == 0 && write_all(lines);

  std::ifstream log(folder + "/DEBUG.LOG", std::ios::binary);
  std::string line;
  for (int header = 0; header < 2; ++header) std::getline(log, line);
  int found[kProcesses] = {};
  int whole = 0, other = 0;
  while (std::getline(log, line)) {
    const unsigned process = static_cast<unsigned>(line[0] - '0');
    const bool is_next =
        process < kProcesses && line == line_of(static_cast<int>(process), found[process]) + '\r';
    is_next ? (++found[process], ++whole) : ++other;
  }
  const bool is_well = all_written && whole == kProcesses * lines && other == 0;
  std::printf("%s: %d of %d lines of %d processes whole and in order, %d others, %ju bytes\n",
              is_well ? "passed" : "FAILED", whole, kProcesses * lines, kProcesses, other,
              static_cast<std::uintmax_t>(std::filesystem::file_size(folder + "/DEBUG.LOG")));
  std::filesystem::remove_all(folder);
  return is_well ? 0 : 1;
}
