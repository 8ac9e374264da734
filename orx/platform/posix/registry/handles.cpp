#include <orx/platform/posix/registry/handles.h>

#include <pthread.h>

#include <cstddef>
#include <new>

namespace orx::platform {
namespace {

// The bits of a handle, from the highest: the `uses` of its row, the number of the row counted from 1, and
// two zero bits. The handles of the roots end in other bits, so no handle is equal to one of them.
constexpr unsigned kRowShift = 2;
constexpr unsigned kRowBits = 20;
constexpr unsigned kUsesShift = kRowShift + kRowBits;
constexpr std::uintptr_t kRowMask = (std::uintptr_t{1} << kRowBits) - 1;
constexpr std::uintptr_t kUsesMask = ~std::uintptr_t{0} >> kUsesShift;

HKEY handle_of(std::uintptr_t uses, std::size_t row) {
  return reinterpret_cast<HKEY>((uses & kUsesMask) << kUsesShift | (row + 1) << kRowShift);
}

void lock_registry() { registry().mutex.lock(); }
void unlock_registry() { registry().mutex.unlock(); }

// Runs in a child process after a fork. The open databases and their locks belong to the parent, and the
// mutex, which lock_registry has locked, belongs to a thread of the parent.
void abandon_registry() {
  registry().user.database().Abandon();
  registry().machine.database().Abandon();
  new (&registry().mutex) std::recursive_mutex;
}

alignas(Registry) std::byte storage[sizeof(Registry)];

// Creates the registry, and closes its files when the process ends. The registry itself is never destroyed:
// at the end of the process other threads may be within a call, and exit handlers of the host may make calls.
// So the destructor closes the files only if no thread is within a call; it does not wait. A later call opens
// its file again.
struct RegistryLifetime {
  RegistryLifetime() {
    new (storage) Registry;
    pthread_atfork(lock_registry, unlock_registry, abandon_registry);
  }
  ~RegistryLifetime() {
    const std::unique_lock lock(registry().mutex, std::try_to_lock);
    if (!lock) return;
    registry().user.database().CloseIfIdle();
    registry().machine.database().CloseIfIdle();
  }
};

}  // namespace

Registry& registry() {
  static const RegistryLifetime lifetime;
  return *std::launder(reinterpret_cast<Registry*>(storage));
}

const OpenKey* Registry::Find(HKEY handle) const {
  static const OpenKey kUserRoot{&registry().user, kRootKey, KEY_ALL_ACCESS, 0};
  static const OpenKey kMachineRoot{&registry().machine, kRootKey, KEY_ALL_ACCESS, 0};
  if (handle == HKEY_CURRENT_USER) return &kUserRoot;
  if (handle == HKEY_LOCAL_MACHINE) return &kMachineRoot;
  const std::size_t row = (reinterpret_cast<std::uintptr_t>(handle) >> kRowShift & kRowMask) - 1;
  if (row >= keys.size() || keys[row].store == nullptr) return nullptr;
  return handle == handle_of(keys[row].uses, row) ? &keys[row] : nullptr;
}

RegistryStore& Registry::StoreOf(HKEY root) { return root == HKEY_LOCAL_MACHINE ? machine : user; }

HKEY Registry::Add(const OpenKey& key) {
  if (free_rows.empty()) {
    if (keys.size() >= kRowMask) throw std::bad_alloc();
    // Space for all rows, so that Remove needs no memory.
    if (free_rows.capacity() <= keys.size()) free_rows.reserve(2 * keys.size() + 1);
    keys.emplace_back();
    free_rows.push_back(static_cast<std::uint32_t>(keys.size() - 1));
  }
  const std::uint32_t row = free_rows.back();
  const std::uintptr_t uses = keys[row].uses + 1;
  free_rows.pop_back();
  keys[row] = key;
  keys[row].uses = uses;
  return handle_of(uses, row);
}

bool Registry::Remove(HKEY handle) {
  const OpenKey* key = Find(handle);
  if (key == nullptr) return false;
  if (key->uses == 0) return true;  // a root
  const auto row = static_cast<std::uint32_t>(key - keys.data());
  keys[row].store = nullptr;
  free_rows.push_back(row);
  return true;
}

}  // namespace orx::platform
