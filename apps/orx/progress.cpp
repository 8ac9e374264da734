#include "progress.h"

#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>

namespace orx::cli {
namespace {

constexpr std::chrono::seconds kFirstDelay(1);
constexpr std::chrono::milliseconds kInterval(200);

// Uses the name of the terminal, since the tool uses only the standard library. A system without /proc shows
// no progress.
bool stderr_is_terminal() {
  std::error_code unknown;
  const std::string name = std::filesystem::read_symlink("/proc/self/fd/2", unknown).string();
  return name.starts_with("/dev/pts/") || name.starts_with("/dev/tty") || name == "/dev/console";
}

}  // namespace

Progress::Progress() : is_terminal_(stderr_is_terminal()), next_(Clock::now() + kFirstDelay) {}

Progress::~Progress() {
  if (is_shown_) std::fprintf(stderr, "\r%40s\r", "");
}

void Progress::Report(const char* work, std::size_t done, std::size_t all) {
  if (!is_terminal_ || Clock::now() < next_) return;
  const double share = static_cast<double>(done) / static_cast<double>(all);
  std::fprintf(stderr, "\r%s %3.0f %%", work, share * 100);
  is_shown_ = true;
  next_ = Clock::now() + kInterval;
}

}  // namespace orx::cli
