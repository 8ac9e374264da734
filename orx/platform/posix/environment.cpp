#include <orx/platform/environment.h>

#include <orx/base/errno_guard.h>
#include <orx/platform/posix/dom/host.h>
#include <orx/platform/posix/environment.h>
#include <orx/platform/posix/support/cancellation_block.h>
#include <orx/platform/posix/support/format_locale.h>

#include <pthread.h>
#include <pwd.h>
#include <sqlite3.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <mutex>
#include <string_view>
#include <vector>

namespace orx::platform {
namespace {

constexpr std::string_view kNames[] = {
    "ORX_DRIVES", "ORX_USER_REGISTRY", "ORX_MACHINE_REGISTRY", "ORX_DEBUG_OUTPUT",
    "HOME",       "XDG_CONFIG_HOME",   "XDG_DATA_HOME"};

// The value of a name that is not kept comes last, and is empty.
using Values = std::array<std::string, std::size(kNames) + 1>;

struct Snapshot {
  Values values;
  const Snapshot* older;
};

// No snapshot is ever freed, since any thread may be reading it. One whose values come back is used again, so
// that a host that switches between a few environments does not use up memory.
constinit const Snapshot* newest = nullptr;
constinit std::atomic<const Snapshot*> current = nullptr;
constinit std::mutex reading;

// A child must not find the lock held by a thread of its parent.
[[maybe_unused]] const int forks =
    pthread_atfork([] { reading.lock(); }, [] { reading.unlock(); }, [] { reading.unlock(); });

Values read_values() {
  Values values;
  for (std::size_t i = 0; i < std::size(kNames); ++i) {
    const char* value = secure_getenv(kNames[i].data());
    if (value != nullptr) values[i] = value;
  }
  return values;
}

// The caller holds the lock.
void read_all() {
  // Other libraries read variables by themselves, on first use: the C library TZ, and LOCPATH to find a
  // locale, SQLite the place of temporary files, libxml2 what its memory is to be searched for.
  tzset();
  format_locale();
  sqlite3_initialize();
  dom::prepare_libxml2();
  std::unique_ptr<const Snapshot> fresh(new Snapshot{read_values(), newest});
  const Snapshot* known = newest;
  while (known != nullptr && known->values != fresh->values) known = known->older;
  if (known == nullptr) newest = known = fresh.release();
  current.store(known, std::memory_order_release);
}

const Values& current_values() {
  const Snapshot* snapshot = current.load(std::memory_order_acquire);
  if (snapshot != nullptr) return snapshot->values;
  const ErrnoGuard errno_guard;
  const CancellationBlock cancellation_block;
  const std::lock_guard lock(reading);
  if (current == nullptr) read_all();
  return current.load()->values;
}

std::string home_of_user() {
  const CancellationBlock cancellation_block;
  std::vector<char> buffer(1024);
  passwd entry;
  passwd* found = nullptr;
  while (getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found) == ERANGE) {
    buffer.resize(buffer.size() * 2);
  }
  return found != nullptr && found->pw_dir != nullptr ? found->pw_dir : "";
}

}  // namespace

void read_environment() {
  const ErrnoGuard errno_guard;
  const CancellationBlock cancellation_block;
  const std::lock_guard lock(reading);
  read_all();
}

const std::string& environment_variable(const char* name) {
  const auto place = std::ranges::find(kNames, std::string_view(name)) - std::begin(kNames);
  return current_values()[static_cast<std::size_t>(place)];
}

std::string user_folder(const char* xdg_variable, const char* below_home) {
  if (std::string folder = environment_variable(xdg_variable); folder.starts_with('/')) return folder;
  std::string home = environment_variable("HOME");
  if (home.empty()) home = home_of_user();
  return home.empty() ? home : home + '/' + below_home;
}

}  // namespace orx::platform
