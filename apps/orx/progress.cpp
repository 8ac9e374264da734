#include "progress.h"

#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>

namespace orx::cli {
namespace {

constexpr std::chrono::seconds kPatience(1);
constexpr std::chrono::milliseconds kPause(200);

// Where the system does not tell by a name, nobody is known to watch.
bool is_terminal() {
  std::error_code unknown;
  const std::string name = std::filesystem::read_symlink("/proc/self/fd/2", unknown).string();
  return name.starts_with("/dev/pts/") || name.starts_with("/dev/tty") || name == "/dev/console";
}

}  // namespace

Progress::Progress() : is_seen_(is_terminal()), next_(Clock::now() + kPatience) {}

Progress::~Progress() {
  if (is_told_) std::fprintf(stderr, "\r%40s\r", "");
}

void Progress::tell(const char* work, std::size_t done, std::size_t all) {
  if (!is_seen_ || Clock::now() < next_) return;
  const double share = static_cast<double>(done) / static_cast<double>(all);
  std::fprintf(stderr, "\r%s %3.0f %%", work, share * 100);
  is_told_ = true;
  next_ = Clock::now() + kPause;
}

}  // namespace orx::cli
