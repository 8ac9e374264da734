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
#include <utility>
#include <vector>

namespace {

using orx::platform::RegistryKey;
using orx::platform::RegistryTransaction;

constexpr char kProductKey[] = ORX_PRODUCT_KEY;

// Level names, up to a null one.
using Levels = std::array<const char*, 5>;

struct Value {
  DWORD type;
  const void* data;
  int size;
};

// A text too long to be counted is too long to be stored, too.
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

// What a flat function does, failing as any other when memory is exhausted.
template <class Body>
int guarded(Body body) {
  const orx::ErrnoGuard errno_guard;
  try {
    return body();
  } catch (const std::exception&) {
    return -1;
  }
}

void report_last_error() { orx::platform::debug_output(orx::platform::last_error_text().c_str()); }

enum class EmptyLevel { kPassedOver, kFails };

// A path from the root, as far as its levels can be names.
struct Path {
  std::string text = kProductKey;
  bool is_whole = true;

  Path(const Levels& levels, EmptyLevel empty) {
    for (const char* const* level = levels.data(); *level != nullptr && is_whole; ++level) {
      is_whole = **level != '\\' && (**level != '\0' || empty == EmptyLevel::kPassedOver);
      if (is_whole && **level != '\0') text.append("\\").append(*level);
    }
  }
};

// Reading never creates a key, except the product key: a new key could not hold the value, and would have to
// be deleted again.
LSTATUS open_existing(const Path& path, RegistryKey& key) {
  const LSTATUS status = key.Open(HKEY_CURRENT_USER, path.text.c_str(), KEY_ALL_ACCESS);
  if (status != ERROR_FILE_NOT_FOUND) return status;
  RegistryKey product;
  const LSTATUS made = product.Create(HKEY_CURRENT_USER, kProductKey);
  return made == ERROR_SUCCESS ? status : made;
}

int read(const Levels& levels, const char* name, void* buffer, int size) {
  return guarded([&] {
    const Path path(levels, EmptyLevel::kFails);
    if (size < 0) return -1;
    RegistryTransaction transaction(HKEY_CURRENT_USER, RegistryTransaction::kRead);
    RegistryKey key;
    const LSTATUS opened = open_existing(path, key);
    LSTATUS status = opened;
    if (opened == ERROR_SUCCESS && path.is_whole) status = key.Query(name, buffer, static_cast<DWORD>(size));
    const LSTATUS end = transaction.End();
    if (!path.is_whole) return -1;
    // Only a failed query is reported. A value of a key that does not exist is a value that does not exist.
    const bool is_queried = opened == ERROR_SUCCESS || opened == ERROR_FILE_NOT_FOUND;
    if (status != ERROR_SUCCESS && is_queried) report_last_error();
    return result_of(status == ERROR_SUCCESS ? end : status);
  });
}

LSTATUS look_for(const Path& path, const char* name, bool& is_there) {
  RegistryTransaction transaction(HKEY_CURRENT_USER, RegistryTransaction::kRead);
  RegistryKey key;
  is_there = path.is_whole && open_existing(path, key) == ERROR_SUCCESS && key.HasValue(name);
  return transaction.End();
}

// Does something to a key, which is made if it is missing. What was made on the way to a level that cannot be
// stays.
template <class Change>
LSTATUS change(const Path& path, Change change_key) {
  RegistryTransaction transaction(HKEY_CURRENT_USER, RegistryTransaction::kWrite);
  RegistryKey key;
  LSTATUS status = key.Create(HKEY_CURRENT_USER, path.text.c_str());
  if (status == ERROR_SUCCESS) status = path.is_whole ? change_key(key) : LSTATUS{ERROR_BAD_PATHNAME};
  const LSTATUS end = transaction.End();
  return status == ERROR_SUCCESS ? end : status;
}

LSTATUS set(const RegistryKey& key, const char* name, const Value& value) {
  return value.size >= 0 ? key.Set(name, value.type, value.data, static_cast<DWORD>(value.size))
                         : LSTATUS{ERROR_INVALID_PARAMETER};
}

int write(const Levels& levels, const char* name, const Value& value) {
  return guarded([&] {
    const Path path(levels, EmptyLevel::kPassedOver);
    return result_of(change(path, [&](const RegistryKey& key) { return set(key, name, value); }));
  });
}

int initialise(const Levels& levels, const char* name, const Value& value) {
  return guarded([&] {
    const Path path(levels, EmptyLevel::kPassedOver);
    bool is_there = false;
    if (look_for(path, name, is_there) != ERROR_SUCCESS) return -1;
    if (is_there) return 0;
    // Another process may have been faster: nobody else writes from here on.
    return result_of(change(path, [&](const RegistryKey& key) {
      return key.HasValue(name) ? LSTATUS{ERROR_SUCCESS} : set(key, name, value);
    }));
  });
}

// An empty name is the key itself. The product key is not to be deleted or emptied.
template <class Delete>
int remove_key(const char* key1, const char* name, Delete delete_key) {
  return guarded([&] {
    const Path path({key1}, EmptyLevel::kPassedOver);
    const bool is_empty = name == nullptr || *name == '\0';
    const bool is_product_key = is_empty && path.text == kProductKey;
    return result_of(change(path, [&](const RegistryKey& key) {
      return is_product_key ? LSTATUS{ERROR_ACCESS_DENIED} : delete_key(key, name);
    }));
  });
}

// Opens a path, and notes the keys that had to be made for it.
LSTATUS make_levels(const Path& path, RegistryKey& key, std::vector<std::string>& made) {
  LSTATUS status = ERROR_SUCCESS;
  for (std::size_t end = std::strlen(kProductKey); status == ERROR_SUCCESS;
       end = path.text.find('\\', end + 1)) {
    bool is_new = false;
    const std::string so_far = path.text.substr(0, end);
    status = key.Create(HKEY_CURRENT_USER, so_far.c_str(), &is_new);
    if (is_new && so_far != kProductKey) made.push_back(so_far);
    if (end == std::string::npos) break;
  }
  return status == ERROR_SUCCESS && !path.is_whole ? LSTATUS{ERROR_BAD_PATHNAME} : status;
}

int open_key(const Path& path, HKEY& opened) {
  RegistryTransaction transaction(HKEY_CURRENT_USER, RegistryTransaction::kRead);
  RegistryKey key;
  std::vector<std::string> made;
  const LSTATUS status = make_levels(path, key, made);
  if (key == nullptr) report_last_error();
  for (; status != ERROR_SUCCESS && !made.empty(); made.pop_back()) {
    if (RegDeleteKeyA(HKEY_CURRENT_USER, made.back().c_str()) != ERROR_SUCCESS) report_last_error();
  }
  if (transaction.End() != ERROR_SUCCESS || status != ERROR_SUCCESS) return -1;
  opened = key.Release();
  return 0;
}

}  // namespace

int hvk_RegReadString(const char* key1, const char* key2, const char* key3, const char* key4,
                      const char* valueName, char* buffer, int size) {
  return read({key1, key2, key3, key4}, valueName, buffer, size);
}

int hvk_RegReadInt(const char* key1, const char* key2, const char* key3, const char* key4,
                   const char* valueName, int* value) {
  return read({key1, key2, key3, key4}, valueName, value, sizeof *value);
}

int hvk_RegReadDouble(const char* key1, const char* key2, const char* key3, const char* key4,
                      const char* valueName, double* value) {
  return read({key1, key2, key3, key4}, valueName, value, sizeof *value);
}

int hvk_RegReadFloat(const char* key1, const char* key2, const char* key3, const char* key4,
                     const char* valueName, float* value) {
  return read({key1, key2, key3, key4}, valueName, value, sizeof *value);
}

int hvk_RegReadBinary(const char* key1, const char* key2, const char* key3, const char* key4,
                      const char* valueName, void* buffer, int size) {
  return read({key1, key2, key3, key4}, valueName, buffer, size);
}

int hvk_RegWrite(const char* key1, const char* key2, const char* key3, const char* key4,
                 const char* valueName, const void* data, int size, int type) {
  return write({key1, key2, key3, key4}, valueName, {static_cast<DWORD>(type), data, size});
}

int hvk_RegWriteString(const char* key1, const char* key2, const char* key3, const char* key4,
                       const char* valueName, const char* text) {
  return write({key1, key2, key3, key4}, valueName, text_value(text));
}

int hvk_RegWriteInt(const char* key1, const char* key2, const char* key3, const char* key4,
                    const char* valueName, int value) {
  return write({key1, key2, key3, key4}, valueName, number_value(REG_DWORD, value));
}

int hvk_RegWriteDouble(const char* key1, const char* key2, const char* key3, const char* key4,
                       const char* valueName, double value) {
  return write({key1, key2, key3, key4}, valueName, number_value(REG_BINARY, value));
}

int hvk_RegWriteFloat(const char* key1, const char* key2, const char* key3, const char* key4,
                      const char* valueName, float value) {
  return write({key1, key2, key3, key4}, valueName, number_value(REG_BINARY, value));
}

int hvk_RegWriteBinary(const char* key1, const char* key2, const char* key3, const char* key4,
                       const char* valueName, const void* data, int size) {
  return write({key1, key2, key3, key4}, valueName, {REG_BINARY, data, size});
}

int hvk_RegWriteInitialize(const char* key1, const char* key2, const char* key3, const char* key4,
                           const char* valueName, const void* data, int size, int type) {
  return initialise({key1, key2, key3, key4}, valueName, {static_cast<DWORD>(type), data, size});
}

int hvk_RegInitString(const char* key1, const char* key2, const char* key3, const char* key4,
                      const char* valueName, const char* text) {
  return initialise({key1, key2, key3, key4}, valueName, text_value(text));
}

int hvk_RegInitInt(const char* key1, const char* key2, const char* key3, const char* key4,
                   const char* valueName, int value) {
  return initialise({key1, key2, key3, key4}, valueName, number_value(REG_DWORD, value));
}

int hvk_RegOpenKey(const char* key1, const char* key2, const char* key3, const char* key4, HKEY* key) {
  if (key == nullptr) return -1;
  return guarded([&] { return open_key(Path({key1, key2, key3, key4}, EmptyLevel::kFails), *key); });
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
  const char first = std::exchange(*buffer, '\0');  // as it stays if the value has no bytes
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
