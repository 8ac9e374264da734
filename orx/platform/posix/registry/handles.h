// The open keys of the process.
#pragma once

#include <orx/compat/hkey.h>
#include <orx/platform/posix/registry/store.h>

#include <cstdint>
#include <mutex>
#include <vector>

namespace orx::platform {

struct OpenKey {
  RegistryStore* store = nullptr;  // null: closed
  KeyId id = 0;
  REGSAM access = 0;
  std::uintptr_t uses = 0;  // of this place in the table, so that a handle that was closed stays so
};

// Handles are numbers, never addresses. All is guarded by `mutex`, which the thread of a transaction holds.
struct Registry {
  std::recursive_mutex mutex;
  RegistryStore user{kUserRegistry};
  RegistryStore machine{kMachineRegistry};
  std::vector<OpenKey> keys;
  std::vector<std::uint32_t> free_places;

  // Null when there is no such key.
  const OpenKey* Find(HKEY handle) const;
  RegistryStore& StoreOf(HKEY root);
  HKEY Add(const OpenKey& key);
  bool Remove(HKEY handle);
};

// Made on first use, and never destroyed.
Registry& registry();

}  // namespace orx::platform
