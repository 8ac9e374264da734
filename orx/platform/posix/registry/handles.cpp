#include <orx/platform/posix/registry/handles.h>

#include <pthread.h>

#include <cstddef>
#include <new>

namespace orx::platform {
namespace {

// A handle is the uses of a place in the table, the place counted from 1, and two zero bits, which the roots'
// have not.
constexpr unsigned kPlaceShift = 2;
constexpr unsigned kPlaceBits = 20;
constexpr unsigned kUsesShift = kPlaceShift + kPlaceBits;
constexpr std::uintptr_t kPlaceMask = (std::uintptr_t{1} << kPlaceBits) - 1;
constexpr std::uintptr_t kUsesMask = ~std::uintptr_t{0} >> kUsesShift;

HKEY handle_of(std::uintptr_t uses, std::size_t place) {
  return reinterpret_cast<HKEY>((uses & kUsesMask) << kUsesShift | (place + 1) << kPlaceShift);
}

void lock_registry() { registry().mutex.lock(); }
void unlock_registry() { registry().mutex.unlock(); }

// In a new process. The files are its parent's, with their locks, and the mutex is held by a thread of its
// parent.
void abandon_registry() {
  registry().user.database().Abandon();
  registry().machine.database().Abandon();
  new (&registry().mutex) std::recursive_mutex;
}

alignas(Registry) std::byte storage[sizeof(Registry)];

// The registry is never destroyed: at the end of the process other threads may still be in a call, and the
// host's own exit handlers may make one. So the end closes the files only if no call is going on, and does
// not wait for one. A later call opens its file again.
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
  const std::size_t place = (reinterpret_cast<std::uintptr_t>(handle) >> kPlaceShift & kPlaceMask) - 1;
  if (place >= keys.size() || keys[place].store == nullptr) return nullptr;
  return handle == handle_of(keys[place].uses, place) ? &keys[place] : nullptr;
}

RegistryStore& Registry::StoreOf(HKEY root) { return root == HKEY_LOCAL_MACHINE ? machine : user; }

HKEY Registry::Add(const OpenKey& key) {
  if (free_places.empty()) {
    if (keys.size() >= kPlaceMask) throw std::bad_alloc();
    // Closing a key must not need memory.
    if (free_places.capacity() <= keys.size()) free_places.reserve(2 * keys.size() + 1);
    keys.emplace_back();
    free_places.push_back(static_cast<std::uint32_t>(keys.size() - 1));
  }
  const std::uint32_t place = free_places.back();
  const std::uintptr_t uses = keys[place].uses + 1;
  free_places.pop_back();
  keys[place] = key;
  keys[place].uses = uses;
  return handle_of(uses, place);
}

bool Registry::Remove(HKEY handle) {
  const OpenKey* key = Find(handle);
  if (key == nullptr || key->uses == 0) return key != nullptr;
  const auto place = static_cast<std::uint32_t>(key - keys.data());
  keys[place].store = nullptr;
  free_places.push_back(place);
  return true;
}

}  // namespace orx::platform
