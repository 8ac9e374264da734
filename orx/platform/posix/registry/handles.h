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
  std::uintptr_t uses = 0;  // how often this row of the table was used
};

// The two stores and the table of open keys. `mutex` guards all of it; the thread of a transaction holds the
// mutex until the transaction ends, and may lock it again.
//
// A handle is a number, not an address: the row of its key in the table and the row's `uses`. A closed row is
// used again for another key, with a higher `uses`, so a handle that was closed stays invalid.
struct Registry {
  std::recursive_mutex mutex;
  RegistryStore user{kUserRegistry};
  RegistryStore machine{kMachineRegistry};
  std::vector<OpenKey> keys;
  std::vector<std::uint32_t> free_rows;

  // Null when the handle is neither a root nor open. The pointer is valid until the next Add.
  const OpenKey* Find(HKEY handle) const;
  RegistryStore& StoreOf(HKEY root);
  // Raises std::bad_alloc, also when the table is full.
  HKEY Add(const OpenKey& key);
  // False when the handle is not open. A root stays open. Needs no memory.
  bool Remove(HKEY handle);
};

// Created by the first call, and never destroyed.
Registry& registry();

}  // namespace orx::platform
