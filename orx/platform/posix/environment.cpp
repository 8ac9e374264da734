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

#include <array>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <mutex>
#include <vector>

namespace orx::platform {
namespace {

constexpr struct {
  Variable variable;
  const char* name;
} kNames[] = {{Variable::kDrives, "ORX_DRIVES"},
              {Variable::kUserRegistry, "ORX_USER_REGISTRY"},
              {Variable::kMachineRegistry, "ORX_MACHINE_REGISTRY"},
              {Variable::kDebugOutput, "ORX_DEBUG_OUTPUT"},
              {Variable::kHome, "HOME"},
              {Variable::kXdgConfigHome, "XDG_CONFIG_HOME"},
              {Variable::kXdgDataHome, "XDG_DATA_HOME"}};

// The values in the order of the enumerators.
using Values = std::array<std::string, std::size(kNames)>;

constexpr std::size_t index_of(Variable variable) { return static_cast<std::size_t>(variable); }
static_assert(index_of(Variable::kXdgDataHome) + 1 == std::size(kNames));

struct Snapshot {
  Values values;
  const Snapshot* older;
};

// Readers take no lock: they load `current` and read the snapshot. Any thread may do that at any time, so a
// snapshot is immutable and is never freed. All snapshots are in a list from the newest to the oldest. When
// the environment gets values that it had before, the old snapshot becomes current again. So a host that
// switches between a few environments uses a limited amount of memory.
constinit const Snapshot* newest = nullptr;
constinit std::atomic<const Snapshot*> current = nullptr;
constinit std::mutex snapshot_mutex;  // for new snapshots

// Without these handlers, a thread of the parent could hold the mutex during a fork, and no thread of the
// child would ever release it.
[[maybe_unused]] const int fork_handlers = pthread_atfork(
    [] { snapshot_mutex.lock(); }, [] { snapshot_mutex.unlock(); }, [] { snapshot_mutex.unlock(); });

Values read_values() {
  Values values;
  for (const auto& [variable, name] : kNames) {
    const char* value = secure_getenv(name);
    if (value != nullptr) values[index_of(variable)] = value;
  }
  return values;
}

const Snapshot* find_snapshot(const Values& values) {
  const Snapshot* snapshot = newest;
  while (snapshot != nullptr && snapshot->values != values) snapshot = snapshot->older;
  return snapshot;
}

// The caller holds the mutex.
void read_all() {
  // Other libraries read variables at their first use: the C library reads TZ, and LOCPATH to find a locale;
  // SQLite reads the folder of temporary files; libxml2 reads its options for debugging memory. They read
  // them here, so that the host may change the environment afterwards.
  tzset();
  format_locale();
  sqlite3_initialize();
  dom::prepare_libxml2();
  std::unique_ptr<const Snapshot> fresh(new Snapshot{read_values(), newest});
  const Snapshot* snapshot = find_snapshot(fresh->values);
  if (snapshot == nullptr) {
    snapshot = fresh.release();
    newest = snapshot;
  }
  current.store(snapshot, std::memory_order_release);
}

const Values& current_values() {
  const Snapshot* snapshot = current.load(std::memory_order_acquire);
  if (snapshot != nullptr) return snapshot->values;
  const ErrnoGuard errno_guard;
  const CancellationBlock cancellation_block;
  const std::lock_guard lock(snapshot_mutex);
  if (current == nullptr) read_all();
  return current.load()->values;
}

// The home folder in the password database, for a process without the variable HOME.
std::string find_home_folder() {
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
  const std::lock_guard lock(snapshot_mutex);
  read_all();
}

const std::string& environment_variable(Variable variable) { return current_values()[index_of(variable)]; }

std::string user_folder(Variable xdg_variable, const char* below_home) {
  if (std::string folder = environment_variable(xdg_variable); folder.starts_with('/')) return folder;
  std::string home = environment_variable(Variable::kHome);
  if (home.empty()) home = find_home_folder();
  return home.empty() ? home : home + '/' + below_home;
}

}  // namespace orx::platform
