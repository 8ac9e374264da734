#include <orx/base/errno_guard.h>
#include <orx/compat/hkey.h>
#include <orx/platform/posix/registry/handles.h>
#include <orx/platform/registry_key.h>

#include <mutex>
#include <new>
#include <string_view>

namespace orx::platform {
namespace {

using Intent = RegistryTransaction::Intent;

std::string_view text_or_empty(const char* text) { return text != nullptr ? text : ""; }

// Runs an operation on a key, in a transaction of its own if its thread has none. An error of the transaction
// is the result, because then nothing that the operation has done is stored.
template <class Operation>
LSTATUS in_transaction(const OpenKey& key, Intent intent, Operation operation) {
  RegistryDatabase& database = key.store->database();
  const bool is_own = !database.is_active();
  if (is_own) database.Begin(intent);
  LSTATUS status = ERROR_KEY_DELETED;  // the result if the file that had the key does not exist any more
  try {
    if (key.id == kRootKey || database.ReadStatus() != ERROR_FILE_NOT_FOUND)
      status = operation(*key.store, key.id);
  } catch (const std::bad_alloc&) {
    status = ERROR_NOT_ENOUGH_MEMORY;
  }
  const LSTATUS end = is_own ? database.End(RegistryTransaction::kKept) : LSTATUS{ERROR_SUCCESS};
  return end != ERROR_SUCCESS ? end : status;
}

// Finds the key of a handle, checks that it was opened with the rights, and runs an operation on it. The lock
// is recursive: the thread of a RegistryTransaction has it already. Every failure becomes the thread's last
// error.
template <class Operation>
LSTATUS with_key(HKEY handle, REGSAM rights, Intent intent, Operation operation) {
  const ErrnoGuard errno_guard;
  const std::lock_guard lock(registry().mutex);
  const OpenKey* found = registry().Find(handle);
  LSTATUS status = ERROR_INVALID_HANDLE;
  if (found != nullptr) {
    const OpenKey key = *found;  // a copy, because an operation that opens a key may move the table
    const bool is_allowed = (key.access & rights) == rights;
    status = is_allowed ? in_transaction(key, intent, operation) : LSTATUS{ERROR_ACCESS_DENIED};
  }
  return status;
}

HKEY add_handle(RegistryStore& store, KeyId id, REGSAM access) {
  return registry().Add({&store, id, access, 0});
}

// Closes a key that was opened in a transaction which failed at its end.
LSTATUS close_after_failure(LSTATUS status, HKEY* opened) {
  if (status == ERROR_SUCCESS || *opened == nullptr) return status;
  RegCloseKey(*opened);
  *opened = nullptr;
  return status;
}

constexpr struct {
  LSTATUS status;
  const char* text;
} kErrorTexts[] = {
    {ERROR_FILE_NOT_FOUND, "File not found."},
    {ERROR_ACCESS_DENIED, "Access denied."},
    {ERROR_INVALID_HANDLE, "Invalid handle."},
    {ERROR_NOT_ENOUGH_MEMORY, "Not enough memory."},
    {ERROR_INVALID_PARAMETER, "Invalid parameter."},
    {ERROR_DISK_FULL, "Disk full."},
    {ERROR_BAD_PATHNAME, "Path is invalid."},
    {ERROR_BUSY, "Resource is in use."},
    {ERROR_MORE_DATA, "More data available."},
    {ERROR_NO_MORE_ITEMS, "No more data available."},
    {ERROR_NOACCESS, "No access to memory location."},
    {ERROR_BADDB, "Registry is corrupt."},
    {ERROR_REGISTRY_IO_FAILED, "Registry input or output failed."},
    {ERROR_KEY_DELETED, "Key deleted."},
};

}  // namespace

// The thread of a transaction holds the lock until End, so that no other thread's call becomes a part of the
// transaction.
RegistryTransaction::RegistryTransaction(HKEY root, Intent intent) : root_(root) {
  const ErrnoGuard errno_guard;
  registry().mutex.lock();
  RegistryDatabase& database = registry().StoreOf(root).database();
  if (!database.is_active()) {
    database.Begin(intent);
  } else {
    root_ = nullptr;
    registry().mutex.unlock();
  }
}

RegistryTransaction::~RegistryTransaction() { End(kUndone); }

LSTATUS RegistryTransaction::End(Outcome outcome) {
  if (root_ == nullptr) return ERROR_SUCCESS;
  const ErrnoGuard errno_guard;
  const LSTATUS status = registry().StoreOf(root_).database().End(outcome);
  root_ = nullptr;
  registry().mutex.unlock();
  return status;
}

std::string registry_file(HKEY root) {
  const ErrnoGuard errno_guard;
  return registry_path(root == HKEY_LOCAL_MACHINE ? kMachineRegistry : kUserRegistry);
}

std::string registry_error_text(LSTATUS status) {
  for (const auto& [known, text] : kErrorTexts) {
    if (known == status) return std::string(text) + "\r\n";
  }
  return "";
}

}  // namespace orx::platform

using orx::platform::add_handle;
using orx::platform::close_after_failure;
using orx::platform::KeyId;
using orx::platform::registry;
using orx::platform::RegistryStore;
using orx::platform::RegistryTransaction;
using orx::platform::text_or_empty;
using orx::platform::with_key;

LSTATUS RegOpenKeyExA(HKEY key, const char* path, DWORD /*options*/, REGSAM access, HKEY* opened) {
  if (opened == nullptr) return ERROR_INVALID_PARAMETER;
  *opened = nullptr;
  const LSTATUS status = with_key(key, 0, RegistryTransaction::kRead, [&](RegistryStore& store, KeyId from) {
    KeyId id = 0;
    const LSTATUS found = store.Find(from, text_or_empty(path), id);
    if (found == ERROR_SUCCESS) *opened = add_handle(store, id, access);
    return found;
  });
  return close_after_failure(status, opened);
}

LSTATUS RegCreateKeyExA(HKEY key, const char* path, DWORD /*reserved*/, char* /*class_name*/,
                        DWORD /*options*/, REGSAM access, const void* /*security*/, HKEY* opened,
                        DWORD* disposition) {
  if (opened == nullptr) return ERROR_INVALID_PARAMETER;
  *opened = nullptr;
  const LSTATUS status = with_key(key, 0, RegistryTransaction::kRead, [&](RegistryStore& store, KeyId from) {
    KeyId id = 0;
    bool is_new = false;
    const LSTATUS made = store.Make(from, text_or_empty(path), id, is_new);
    if (made != ERROR_SUCCESS) return made;
    *opened = add_handle(store, id, access);
    if (disposition != nullptr) *disposition = is_new ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY;
    return made;
  });
  return close_after_failure(status, opened);
}

LSTATUS RegCloseKey(HKEY key) {
  const std::lock_guard lock(registry().mutex);
  return registry().Remove(key) ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
}

LSTATUS RegQueryValueExA(HKEY key, const char* name, DWORD* /*reserved*/, DWORD* type, BYTE* data,
                         DWORD* size) {
  if (data != nullptr && size == nullptr) return ERROR_INVALID_PARAMETER;
  return with_key(key, KEY_QUERY_VALUE, RegistryTransaction::kRead, [&](RegistryStore& store, KeyId id) {
    return store.Query(id, text_or_empty(name), {type, data, size});
  });
}

LSTATUS RegSetValueExA(HKEY key, const char* name, DWORD /*reserved*/, DWORD type, const BYTE* data,
                       DWORD size) {
  return with_key(key, KEY_SET_VALUE, RegistryTransaction::kWrite, [&](RegistryStore& store, KeyId id) {
    if (data == nullptr && size > 0) return LSTATUS{ERROR_NOACCESS};
    return store.Set(id, text_or_empty(name), type, data, size);
  });
}

LSTATUS RegDeleteValueA(HKEY key, const char* name) {
  return with_key(key, KEY_SET_VALUE, RegistryTransaction::kWrite,
                  [&](RegistryStore& store, KeyId id) { return store.DeleteValue(id, text_or_empty(name)); });
}

LSTATUS RegDeleteKeyA(HKEY key, const char* path) {
  if (path == nullptr) return ERROR_INVALID_PARAMETER;
  return with_key(key, 0, RegistryTransaction::kRead,
                  [&](RegistryStore& store, KeyId id) { return store.Delete(id, path); });
}

LSTATUS SHDeleteKeyA(HKEY key, const char* path) {
  return with_key(key, 0, RegistryTransaction::kRead,
                  [&](RegistryStore& store, KeyId id) { return store.DeleteTree(id, text_or_empty(path)); });
}

LSTATUS RegEnumKeyExA(HKEY key, DWORD index, char* name, DWORD* name_size, DWORD* /*reserved*/,
                      char* /*class_name*/, DWORD* /*class_size*/, void* /*last_write_time*/) {
  if (name == nullptr || name_size == nullptr) return ERROR_INVALID_PARAMETER;
  return with_key(key, KEY_ENUMERATE_SUB_KEYS, RegistryTransaction::kRead,
                  [&](RegistryStore& store, KeyId id) {
                    return store.ListKey(id, index, {name, name_size});
                  });
}

LSTATUS RegEnumValueA(HKEY key, DWORD index, char* name, DWORD* name_size, DWORD* /*reserved*/, DWORD* type,
                      BYTE* data, DWORD* size) {
  if (name == nullptr || name_size == nullptr || (data != nullptr && size == nullptr))
    return ERROR_INVALID_PARAMETER;
  return with_key(key, KEY_QUERY_VALUE, RegistryTransaction::kRead, [&](RegistryStore& store, KeyId id) {
    return store.ListValue(id, index, {name, name_size}, {type, data, size});
  });
}
