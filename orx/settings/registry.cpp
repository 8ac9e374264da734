#include <orx/settings/registry.h>

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

constexpr char kProductKey[] = "Halvark Software\\TESSEL\\6.9.1";

// Level names, up to a null one.
using Path = std::array<const char*, 5>;

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

int result_of(LSTATUS status) { return status == ERROR_SUCCESS ? 0 : -1; }

void report_last_error() {
  try {
    orx::platform::debug_output(orx::platform::last_error_text().c_str());
  } catch (const std::exception&) {
  }
}

// Opens the suite's key, made if it is missing, and goes on from there, a step for each level of the path.
template <class Step>
LSTATUS open(const Path& path, RegistryKey& key, REGSAM access, Step step) {
  LSTATUS status = key.Open(HKEY_CURRENT_USER, "Software", access);
  if (status == ERROR_SUCCESS) status = key.Create(key, kProductKey);
  for (const char* const* level = path.data(); status == ERROR_SUCCESS && *level != nullptr; ++level) {
    status = step(*level);
  }
  return status;
}

constexpr LSTATUS kEmptyLevel = -1;  // no code of the system's

// Keys that are missing are not made: they could not hold the value, and would have to go again.
int read(const Path& path, const char* name, void* buffer, int size) {
  if (size < 0) return -1;
  RegistryTransaction transaction(HKEY_CURRENT_USER, RegistryTransaction::kRead);
  RegistryKey key;
  LSTATUS status = open(path, key, KEY_READ, [&](const char* level) {
    return *level != '\0' ? key.Open(key, level, KEY_ALL_ACCESS) : kEmptyLevel;
  });
  if (status == ERROR_SUCCESS) status = key.Query(name, buffer, static_cast<DWORD>(size));
  const LSTATUS end = transaction.End();
  if (status != ERROR_SUCCESS && status != kEmptyLevel) report_last_error();
  return status == ERROR_SUCCESS ? result_of(end) : -1;
}

bool exists(const Path& path, const char* name) {
  const RegistryTransaction transaction(HKEY_CURRENT_USER, RegistryTransaction::kRead);
  RegistryKey key;
  const auto step = [&](const char* level) { return key.Open(key, level, KEY_ALL_ACCESS); };
  return open(path, key, KEY_QUERY_VALUE, step) == ERROR_SUCCESS && key.HasValue(name);
}

// Does something to a key, which is made if it is missing.
template <class Change>
int change(const Path& path, REGSAM access, Change change_key) {
  RegistryTransaction transaction(HKEY_CURRENT_USER, RegistryTransaction::kWrite);
  RegistryKey key;
  LSTATUS status = open(path, key, access, [&](const char* level) { return key.Create(key, level); });
  if (status == ERROR_SUCCESS) status = change_key(key);
  const LSTATUS end = transaction.End();
  return result_of(status == ERROR_SUCCESS ? end : status);
}

LSTATUS set(const RegistryKey& key, const char* name, const Value& value) {
  return value.size >= 0 ? key.Set(name, value.type, value.data, static_cast<DWORD>(value.size))
                         : LSTATUS{ERROR_INVALID_PARAMETER};
}

int write(const Path& path, const char* name, const Value& value) {
  return change(path, KEY_READ, [&](const RegistryKey& key) { return set(key, name, value); });
}

int initialise(const Path& path, const char* name, const Value& value) {
  if (exists(path, name)) return 0;
  // Another process may have been faster: nobody else writes from here on.
  return change(path, KEY_QUERY_VALUE, [&](const RegistryKey& key) {
    return key.HasValue(name) ? LSTATUS{ERROR_SUCCESS} : set(key, name, value);
  });
}

template <class Delete>
int remove(const char* key1, const char* name, Delete delete_key) {
  if (name == nullptr) return -1;
  return change({key1}, KEY_WRITE, [&](const RegistryKey& key) { return delete_key(key, name); });
}

// Makes what is missing level by level, also within one that has several with backslashes between them.
// `path` is what was gone through so far, `made` what was made of it.
LSTATUS make_levels(const char* level, RegistryKey& key, std::string& path, std::vector<std::string>& made) {
  LSTATUS status = *level != '\0' ? ERROR_SUCCESS : kEmptyLevel;
  while (status == ERROR_SUCCESS && *level != '\0') {
    const std::size_t length = std::max<std::size_t>(std::strcspn(level, "\\"), 1);
    const std::string name(level, length);
    bool is_new = false;
    status = key.Create(key, name.c_str(), &is_new);
    path += path.empty() ? name : '\\' + name;
    if (is_new) made.push_back(path);
    level += length + std::strspn(level + length, "\\");
  }
  return status;
}

void delete_levels(std::vector<std::string>&& made) {
  RegistryKey product;
  if (open({}, product, KEY_READ, [](const char*) { return LSTATUS{ERROR_SUCCESS}; }) != ERROR_SUCCESS)
    return;
  for (; !made.empty(); made.pop_back()) {
    if (RegDeleteKeyA(product, made.back().c_str()) != ERROR_SUCCESS) report_last_error();
  }
}

int open_key(const Path& levels, HKEY& opened) {
  RegistryTransaction transaction(HKEY_CURRENT_USER, RegistryTransaction::kRead);
  RegistryKey key;
  std::string path;
  std::vector<std::string> made;
  const LSTATUS status =
      open(levels, key, KEY_READ, [&](const char* level) { return make_levels(level, key, path, made); });
  if (status != ERROR_SUCCESS) delete_levels(std::move(made));
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
  try {
    return open_key({key1, key2, key3, key4}, *key);
  } catch (const std::exception&) {
    return -1;
  }
}

int hvk_RegCloseKey(HKEY* key) { return key != nullptr ? result_of(RegCloseKey(*key)) : -1; }

int hvk_RegDeleteKey(const char* key1, const char* name) {
  return remove(key1, name, [](HKEY key, const char* path) { return RegDeleteKeyA(key, path); });
}

int hvk_RegSHDeleteKey(const char* key1, const char* name) {
  return remove(key1, name, [](HKEY key, const char* path) { return SHDeleteKeyA(key, path); });
}

int hvk_GetChartwrightInstallFolder(char* buffer, int size) {
  if (buffer == nullptr || size < 1) return -1;
  *buffer = '\0';  // as it stays if the value has no bytes
  RegistryKey key;
  LSTATUS status = key.Open(HKEY_LOCAL_MACHINE, "Software\\Halvark Software\\Chartwright", KEY_QUERY_VALUE);
  if (status == ERROR_SUCCESS) status = key.Query("InstallFolder", buffer, static_cast<DWORD>(size));
  return status == ERROR_SUCCESS && *buffer != '\0' ? 0 : -1;
}

int orx_registry_file(HKEY root, char* path, size_t size) {
  if (path == nullptr || size == 0) return -1;
  std::string file;
  try {
    file = orx::platform::registry_file(root);
  } catch (const std::exception&) {
  }
  const bool fits = !file.empty() && file.size() < size;
  if (!fits) file.clear();
  std::memcpy(path, file.c_str(), file.size() + 1);
  return fits ? 0 : -1;
}
