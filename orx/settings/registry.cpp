#include <orx/settings/registry.h>

#include <orx/base/errno_guard.h>
#include <orx/platform/debug_output.h>
#include <orx/platform/registry_key.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstddef>
#include <cstring>
#include <exception>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using orx::platform::RegistryKey;
using orx::platform::RegistryTransaction;

constexpr char kProductKey[] = ORX_PRODUCT_KEY;

// The names of a path, of which the first null name is the end.
using Levels = std::array<const char*, 5>;

struct Value {
  DWORD type;
  const void* data;
  int size;
};

// A length beyond int is replaced by the greatest size, which is too large to be stored and is refused there.
Value text_value(const char* text) {
  const std::size_t length = text != nullptr ? std::strlen(text) : 0;
  return {REG_SZ, text, static_cast<int>(std::min<std::size_t>(length, INT_MAX - 1)) + 1};
}

template <class Number>
Value number_value(DWORD type, const Number& number) {
  return {type, &number, sizeof number};
}

bool is_root(HKEY key) { return key == HKEY_CURRENT_USER || key == HKEY_LOCAL_MACHINE; }

int result_of(LSTATUS status) { return status == ERROR_SUCCESS ? 0 : -1; }

// Runs the body of an exported function. Out of memory is a failure like any other.
template <class Body>
int guarded(Body body) {
  const orx::ErrnoGuard errno_guard;
  try {
    return body();
  } catch (const std::exception&) {
    return -1;
  }
}

void report_error(LSTATUS status) {
  orx::platform::debug_output(orx::platform::registry_error_text(status).c_str());
}

// What an empty name in a path means: the key before it, or a failure.
enum class EmptyName { kSkipped, kRefused };

// A path from the root, up to its end or its first invalid name.
struct Path {
  Path(const Levels& levels, EmptyName empty_name) {
    for (const char* const* level = levels.data(); *level != nullptr && is_valid; ++level) {
      const std::string_view name = *level;
      is_valid = !name.starts_with('\\') && (!name.empty() || empty_name == EmptyName::kSkipped);
      if (is_valid && !name.empty()) text.append("\\").append(name);
    }
  }

  std::string text = kProductKey;
  bool is_valid = true;
};

// Opens a key without creating it, because a new key could not have the value and would have to be deleted
// again. Only the product key is created.
LSTATUS open_existing(const Path& path, RegistryKey& key) {
  const LSTATUS status = key.Open(HKEY_CURRENT_USER, path.text.c_str(), KEY_ALL_ACCESS);
  if (status != ERROR_FILE_NOT_FOUND) return status;
  RegistryKey product;
  const LSTATUS made = product.Create(HKEY_CURRENT_USER, kProductKey);
  return made == ERROR_SUCCESS ? status : made;
}

int read_value(const Levels& levels, const char* name, void* buffer, int size) {
  return guarded([&] {
    const Path path(levels, EmptyName::kRefused);
    if (size < 0) return -1;
    RegistryTransaction transaction(HKEY_CURRENT_USER, RegistryTransaction::kRead);
    RegistryKey key;
    const LSTATUS opened = open_existing(path, key);
    LSTATUS status = opened;
    if (opened == ERROR_SUCCESS && path.is_valid) status = key.Query(name, buffer, static_cast<DWORD>(size));
    const LSTATUS end = transaction.End();
    if (!path.is_valid) return -1;
    // Only a failed query is reported. A missing key counts as a missing value, which is a failed query.
    const bool is_queried = opened == ERROR_SUCCESS || opened == ERROR_FILE_NOT_FOUND;
    if (status != ERROR_SUCCESS && is_queried) report_error(status);
    return result_of(status == ERROR_SUCCESS ? end : status);
  });
}

// Sets `is_there` to whether the value exists.
LSTATUS find_value(const Path& path, const char* name, bool& is_there) {
  RegistryTransaction transaction(HKEY_CURRENT_USER, RegistryTransaction::kRead);
  RegistryKey key;
  is_there = path.is_valid && open_existing(path, key) == ERROR_SUCCESS && key.HasValue(name);
  return transaction.End();
}

// Creates the key if it is missing, and calls `change_key` with it. If the path is invalid, the keys before
// its invalid name are created all the same.
template <class Change>
LSTATUS change_at(const Path& path, Change change_key) {
  RegistryTransaction transaction(HKEY_CURRENT_USER, RegistryTransaction::kWrite);
  RegistryKey key;
  LSTATUS status = key.Create(HKEY_CURRENT_USER, path.text.c_str());
  if (status == ERROR_SUCCESS && !path.is_valid) status = ERROR_BAD_PATHNAME;
  if (status == ERROR_SUCCESS) status = change_key(key);
  const LSTATUS end = transaction.End();
  return status == ERROR_SUCCESS ? end : status;
}

LSTATUS set_value(const RegistryKey& key, const char* name, const Value& value) {
  if (value.size < 0) return ERROR_INVALID_PARAMETER;
  return key.Set(name, value.type, value.data, static_cast<DWORD>(value.size));
}

int write_value(const Levels& levels, const char* name, const Value& value) {
  return guarded([&] {
    const Path path(levels, EmptyName::kSkipped);
    const auto set = [&](const RegistryKey& key) { return set_value(key, name, value); };
    return result_of(change_at(path, set));
  });
}

// Checks for the value twice. The first check only reads, so it does not wait for other processes that write,
// and is usually enough. Another process may write the value after it; the second check runs in the
// transaction that writes.
int initialise_value(const Levels& levels, const char* name, const Value& value) {
  return guarded([&] {
    const Path path(levels, EmptyName::kSkipped);
    bool is_there = false;
    if (find_value(path, name, is_there) != ERROR_SUCCESS) return -1;
    if (is_there) return 0;
    const auto set_if_missing = [&](const RegistryKey& key) {
      return key.HasValue(name) ? LSTATUS{ERROR_SUCCESS} : set_value(key, name, value);
    };
    return result_of(change_at(path, set_if_missing));
  });
}

// An empty name is the key itself. The product key must not be deleted or emptied.
template <class Delete>
int remove_key(const char* key1, const char* name, Delete delete_key) {
  return guarded([&] {
    const Path path({key1}, EmptyName::kSkipped);
    const bool is_empty = name == nullptr || *name == '\0';
    const bool is_product_key = is_empty && path.text == kProductKey;
    const auto delete_unless_product_key = [&](const RegistryKey& key) {
      return is_product_key ? LSTATUS{ERROR_ACCESS_DENIED} : delete_key(key, name);
    };
    return result_of(change_at(path, delete_unless_product_key));
  });
}

// Opens the key of a path level by level, and adds the paths of the keys that it creates below the product
// key to `created`.
LSTATUS create_levels(const Path& path, RegistryKey& key, std::vector<std::string>& created) {
  LSTATUS status = ERROR_SUCCESS;
  for (std::size_t end = std::strlen(kProductKey); status == ERROR_SUCCESS;
       end = path.text.find('\\', end + 1)) {
    bool is_new = false;
    const std::string so_far = path.text.substr(0, end);
    status = key.Create(HKEY_CURRENT_USER, so_far.c_str(), &is_new);
    if (is_new && so_far != kProductKey) created.push_back(so_far);
    if (end == std::string::npos) break;
  }
  if (status == ERROR_SUCCESS && !path.is_valid) status = ERROR_BAD_PATHNAME;
  return status;
}

int open_key(const Path& path, HKEY& opened) {
  RegistryTransaction transaction(HKEY_CURRENT_USER, RegistryTransaction::kRead);
  RegistryKey key;
  std::vector<std::string> created;
  const LSTATUS status = create_levels(path, key, created);
  if (key == nullptr) report_error(status);
  for (; status != ERROR_SUCCESS && !created.empty(); created.pop_back()) {
    const LSTATUS deleted = RegDeleteKeyA(HKEY_CURRENT_USER, created.back().c_str());
    if (deleted != ERROR_SUCCESS) report_error(status);
  }
  if (transaction.End() != ERROR_SUCCESS || status != ERROR_SUCCESS) return -1;
  opened = key.Release();
  return 0;
}

}  // namespace

int hvk_RegReadString(const char* key1, const char* key2, const char* key3, const char* key4,
                      const char* valueName, char* buffer, int size) {
  return read_value({key1, key2, key3, key4}, valueName, buffer, size);
}

int hvk_RegReadInt(const char* key1, const char* key2, const char* key3, const char* key4,
                   const char* valueName, int* value) {
  return read_value({key1, key2, key3, key4}, valueName, value, sizeof *value);
}

int hvk_RegReadDouble(const char* key1, const char* key2, const char* key3, const char* key4,
                      const char* valueName, double* value) {
  return read_value({key1, key2, key3, key4}, valueName, value, sizeof *value);
}

int hvk_RegReadFloat(const char* key1, const char* key2, const char* key3, const char* key4,
                     const char* valueName, float* value) {
  return read_value({key1, key2, key3, key4}, valueName, value, sizeof *value);
}

int hvk_RegReadBinary(const char* key1, const char* key2, const char* key3, const char* key4,
                      const char* valueName, void* buffer, int size) {
  return read_value({key1, key2, key3, key4}, valueName, buffer, size);
}

int hvk_RegWrite(const char* key1, const char* key2, const char* key3, const char* key4,
                 const char* valueName, const void* data, int size, int type) {
  return write_value({key1, key2, key3, key4}, valueName, {static_cast<DWORD>(type), data, size});
}

int hvk_RegWriteString(const char* key1, const char* key2, const char* key3, const char* key4,
                       const char* valueName, const char* text) {
  return write_value({key1, key2, key3, key4}, valueName, text_value(text));
}

int hvk_RegWriteInt(const char* key1, const char* key2, const char* key3, const char* key4,
                    const char* valueName, int value) {
  return write_value({key1, key2, key3, key4}, valueName, number_value(REG_DWORD, value));
}

int hvk_RegWriteDouble(const char* key1, const char* key2, const char* key3, const char* key4,
                       const char* valueName, double value) {
  return write_value({key1, key2, key3, key4}, valueName, number_value(REG_BINARY, value));
}

int hvk_RegWriteFloat(const char* key1, const char* key2, const char* key3, const char* key4,
                      const char* valueName, float value) {
  return write_value({key1, key2, key3, key4}, valueName, number_value(REG_BINARY, value));
}

int hvk_RegWriteBinary(const char* key1, const char* key2, const char* key3, const char* key4,
                       const char* valueName, const void* data, int size) {
  return write_value({key1, key2, key3, key4}, valueName, {REG_BINARY, data, size});
}

int hvk_RegWriteInitialize(const char* key1, const char* key2, const char* key3, const char* key4,
                           const char* valueName, const void* data, int size, int type) {
  return initialise_value({key1, key2, key3, key4}, valueName, {static_cast<DWORD>(type), data, size});
}

int hvk_RegInitString(const char* key1, const char* key2, const char* key3, const char* key4,
                      const char* valueName, const char* text) {
  return initialise_value({key1, key2, key3, key4}, valueName, text_value(text));
}

int hvk_RegInitInt(const char* key1, const char* key2, const char* key3, const char* key4,
                   const char* valueName, int value) {
  return initialise_value({key1, key2, key3, key4}, valueName, number_value(REG_DWORD, value));
}

int hvk_RegOpenKey(const char* key1, const char* key2, const char* key3, const char* key4, HKEY* key) {
  if (key == nullptr) return -1;
  return guarded([&] { return open_key(Path({key1, key2, key3, key4}, EmptyName::kRefused), *key); });
}

int hvk_RegCloseKey(HKEY* key) { return key != nullptr ? result_of(RegCloseKey(*key)) : -1; }

int hvk_RegDeleteKey(const char* key1, const char* name) {
  return remove_key(key1, name, [](HKEY key, const char* path) { return RegDeleteKeyA(key, path); });
}

int hvk_RegSHDeleteKey(const char* key1, const char* name) {
  return remove_key(key1, name, [](HKEY key, const char* path) { return SHDeleteKeyA(key, path); });
}

int hvk_GetChartwrightInstallFolder(char* buffer, int size) {
  if (buffer == nullptr || size < 1) return -1;
  // A value without bytes leaves the buffer as it is, and must be read as the empty text.
  const char first = std::exchange(*buffer, '\0');
  RegistryKey key;
  LSTATUS status = key.Open(HKEY_LOCAL_MACHINE, "Software\\Halvark Software\\Chartwright", KEY_QUERY_VALUE);
  if (status == ERROR_SUCCESS) status = key.Query("InstallFolder", buffer, static_cast<DWORD>(size));
  if (status != ERROR_SUCCESS) *buffer = first;
  return status == ERROR_SUCCESS && *buffer != '\0' ? 0 : -1;
}

int orx_registry_file(HKEY root, char* path, size_t size) {
  if (path == nullptr || size == 0) return -1;
  std::string file;
  try {
    if (is_root(root)) file = orx::platform::registry_file(root);
  } catch (const std::exception&) {
  }
  const bool fits = !file.empty() && file.size() < size;
  if (!fits) file.clear();
  std::memcpy(path, file.c_str(), file.size() + 1);
  return fits ? 0 : -1;
}

LSTATUS orx_registry_change(HKEY root, LSTATUS (*change)(void* context), void* context) {
  if (change == nullptr) return ERROR_INVALID_PARAMETER;
  if (!is_root(root)) return ERROR_INVALID_HANDLE;
  RegistryTransaction transaction(root, RegistryTransaction::kWrite);
  const LSTATUS status = change(context);
  const LSTATUS end =
      transaction.End(status == ERROR_SUCCESS ? RegistryTransaction::kKept : RegistryTransaction::kUndone);
  return status == ERROR_SUCCESS ? end : status;
}
