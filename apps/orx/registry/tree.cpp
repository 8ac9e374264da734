#include "registry/tree.h"

#include <orx/compat/string_a.h>
#include <orx/frame/native_path.h>
#include <orx/settings/registry.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <exception>
#include <iterator>
#include <utility>

namespace orx::cli {
namespace {

constexpr DWORD kFirstDataSize = 4096;  // buffers grow for longer values

// Errors of the registry. If `is_of_file`, the reason follows the name of the registry's file.
constexpr struct {
  LSTATUS status;
  bool is_of_file;
  const char* reason;
} kReasons[] = {
    {ERROR_FILE_NOT_FOUND, false, "there is no such key"},
    {ERROR_KEY_DELETED, false, "another program has deleted the key"},
    {ERROR_INVALID_PARAMETER, false, "a name is too long or not UTF-8, or the key is nested too deeply"},
    {ERROR_NOT_ENOUGH_MEMORY, false, "out of memory"},
    {ERROR_BAD_PATHNAME, false, "the user has no home folder for the registry"},
    {ERROR_BUSY, true, "is locked by another program"},
    {ERROR_BADDB, true, "is damaged, is not a registry, or is of a later version"},
    {ERROR_DISK_FULL, true, "is on a full disk"},
    {ERROR_REGISTRY_IO_FAILED, true, "cannot be read or written"},
};

std::string registry_file_of(HKEY root) {
  std::array<char, ORX_PATH_SIZE> path{};
  return orx_registry_file(root, path.data(), path.size()) == 0 ? path.data() : "the registry";
}

std::string user_name() {
  for (const char* const variable : {"USER", "LOGNAME", "USERNAME"}) {
    const char* const name = std::getenv(variable);
    if (name != nullptr && *name != '\0') return name;
  }
  return "this user";
}

void require_success(const KeyName& key, LSTATUS status, Use use) {
  if (status != ERROR_SUCCESS) throw registry_failure(key, status, use);
}

// An open key, which is created when it is opened for writing.
class OpenKey {
 public:
  OpenKey(HKEY parent, const std::string& path, const KeyName& key, Use use) {
    const LSTATUS status = use == Use::kRead ? RegOpenKeyExA(parent, path.c_str(), 0, KEY_READ, &key_)
                                             : RegCreateKeyExA(parent, path.c_str(), 0, nullptr, 0,
                                                               KEY_READ | KEY_WRITE, nullptr, &key_, nullptr);
    require_success(key, status, use);
  }
  OpenKey(const KeyName& key, Use use) : OpenKey(key.root, key.path, key, use) {}
  OpenKey(const OpenKey&) = delete;
  OpenKey& operator=(const OpenKey&) = delete;
  ~OpenKey() { RegCloseKey(key_); }

  operator HKEY() const { return key_; }

 private:
  HKEY key_ = nullptr;
};

// A sub-key for messages. It is opened through its parent, so it needs no path.
KeyName sub_key_of(const KeyName& key, const std::string& name) {
  return {key.root, {}, key.full + '\\' + name};
}

void require_value(const KeyName& key, const std::string& name, LSTATUS status, Use use) {
  if (status != ERROR_FILE_NOT_FOUND) return require_success(key, status, use);
  throw Failure(key.full,
                name.empty() ? "the key has no default value" : "the key has no value '" + name + "'");
}

StoredValue read_opened(HKEY opened, const KeyName& key, const std::string& name) {
  StoredValue value{name, REG_NONE, {}};
  DWORD size = kFirstDataSize;
  LSTATUS status = ERROR_MORE_DATA;
  while (status == ERROR_MORE_DATA) {  // again if another program writes a longer value between the calls
    value.bytes.resize(size);
    status = RegQueryValueExA(opened, name.c_str(), nullptr, &value.type,
                              reinterpret_cast<BYTE*>(value.bytes.data()), &size);
  }
  require_value(key, name, status, Use::kRead);
  value.bytes.resize(size);
  return value;
}

using NameBuffer = std::vector<char>;

// Names of values are longer than those of keys, and a character has up to four bytes.
NameBuffer make_name_buffer() { return NameBuffer(4 * ORX_REGISTRY_VALUE_NAME_LENGTH + 1); }

std::vector<StoredValue> values_of(HKEY opened, const KeyName& key) {
  std::vector<StoredValue> values;
  NameBuffer name = make_name_buffer();
  std::vector<BYTE> data(kFirstDataSize);
  for (;;) {
    auto length = static_cast<DWORD>(name.size());
    auto size = static_cast<DWORD>(data.size());
    DWORD type = 0;
    const LSTATUS status = RegEnumValueA(opened, static_cast<DWORD>(values.size()), name.data(), &length,
                                         nullptr, &type, data.data(), &size);
    if (status == ERROR_NO_MORE_ITEMS) return values;
    if (status == ERROR_MORE_DATA && size > data.size()) {
      data.resize(size);
      continue;
    }
    require_success(key, status, Use::kRead);
    values.push_back({{name.data(), length}, type, {reinterpret_cast<const char*>(data.data()), size}});
  }
}

// Lists all sub-keys before it reads any: the registry finds the next name quickly only if no other list was
// read in between.
std::vector<Tree> sub_keys_of(HKEY opened, const KeyName& key) {
  std::vector<Tree> keys;
  NameBuffer name = make_name_buffer();
  for (;;) {
    auto length = static_cast<DWORD>(name.size());
    const LSTATUS status = RegEnumKeyExA(opened, static_cast<DWORD>(keys.size()), name.data(), &length,
                                         nullptr, nullptr, nullptr, nullptr);
    if (status == ERROR_NO_MORE_ITEMS) return keys;
    require_success(key, status, Use::kRead);
    keys.push_back({{name.data(), length}, {}, {}});
  }
}

void read_sub_tree(HKEY opened, const KeyName& key, Tree& tree) {
  tree.values = values_of(opened, key);
  tree.keys = sub_keys_of(opened, key);
  for (Tree& sub_key : tree.keys) {
    const KeyName name = sub_key_of(key, sub_key.name);
    read_sub_tree(OpenKey(opened, sub_key.name, name, Use::kRead), name, sub_key);
  }
}

void write_opened(HKEY opened, const KeyName& key, const StoredValue& value) {
  const auto* const bytes = reinterpret_cast<const BYTE*>(value.bytes.data());
  const LSTATUS status = RegSetValueExA(opened, value.name.c_str(), 0, value.type, bytes,
                                        static_cast<DWORD>(value.bytes.size()));
  require_success(key, status, Use::kWrite);
}

void write_sub_tree(HKEY opened, const KeyName& key, const Tree& tree) {
  for (const StoredValue& value : tree.values) write_opened(opened, key, value);
  for (const Tree& sub_key : tree.keys) {
    const KeyName name = sub_key_of(key, sub_key.name);
    write_sub_tree(OpenKey(opened, sub_key.name, name, Use::kWrite), name, sub_key);
  }
}

// Reads back what was written: two names that are the same for the registry would silently lose a value.
void verify_sub_tree(HKEY opened, const KeyName& key, const Tree& tree) {
  for (const StoredValue& value : tree.values) {
    const StoredValue kept = read_opened(opened, key, value.name);
    if (kept.type == value.type && kept.bytes == value.bytes) continue;
    throw Failure(key.full, "another value has the same name as '" + value.name + "'");
  }
  for (const Tree& sub_key : tree.keys) {
    const KeyName name = sub_key_of(key, sub_key.name);
    verify_sub_tree(OpenKey(opened, sub_key.name, name, Use::kRead), name, sub_key);
  }
}

}  // namespace

KeyName parse_key(const std::string& text) {
  const std::string name = text.substr(0, text.find('\\'));
  const auto is = [root = CStringA(name.c_str())](const char* known) {
    return root.CompareNoCase(known) == 0;
  };
  KeyName key{};
  if (is("HKCU") || is("HKEY_CURRENT_USER")) key = {HKEY_CURRENT_USER, {}, "HKCU"};
  if (is("HKLM") || is("HKEY_LOCAL_MACHINE")) key = {HKEY_LOCAL_MACHINE, {}, "HKLM"};
  if (key.root == nullptr) throw Failure(text, "a key begins with HKCU\\ or HKLM\\");
  // The registry ignores repeated and trailing backslashes, so messages leave them out as well.
  std::size_t at = text.find_first_not_of('\\', name.size());
  while (at != std::string::npos) {
    const std::string level = text.substr(at, text.find('\\', at) - at);
    at = text.find_first_not_of('\\', at + level.size());
    key.path += key.path.empty() ? level : '\\' + level;
    key.full += '\\' + level;
  }
  return key;
}

Failure registry_failure(const KeyName& key, LSTATUS status, Use use) {
  if (status == ERROR_ACCESS_DENIED) {
    const char* const verb = use == Use::kRead ? " may not read " : " may not write ";
    return {key.full, user_name() + verb + registry_file_of(key.root)};
  }
  const auto* const row = std::ranges::find(kReasons, status, [](const auto& known) { return known.status; });
  if (row == std::end(kReasons)) return {key.full, "error " + std::to_string(status)};
  return {key.full, row->is_of_file ? registry_file_of(key.root) + ' ' + row->reason : row->reason};
}

StoredValue read_value(const KeyName& key, const std::string& name) {
  return read_opened(OpenKey(key, Use::kRead), key, name);
}

void write_value(const KeyName& key, const StoredValue& value) {
  write_opened(OpenKey(key, Use::kWrite), key, value);
}

void delete_value(const KeyName& key, const std::string& name) {
  HKEY opened = nullptr;
  // Not through OpenKey, which would create a missing key.
  const LSTATUS opening = RegOpenKeyExA(key.root, key.path.c_str(), 0, KEY_WRITE, &opened);
  require_success(key, opening, Use::kRead);
  const LSTATUS status = RegDeleteValueA(opened, name.c_str());
  RegCloseKey(opened);
  require_value(key, name, status, Use::kWrite);
}

bool has_sub_keys(const KeyName& key) {
  NameBuffer name = make_name_buffer();
  auto length = static_cast<DWORD>(name.size());
  const OpenKey opened(key, Use::kRead);
  const LSTATUS status = RegEnumKeyExA(opened, 0, name.data(), &length, nullptr, nullptr, nullptr, nullptr);
  return status == ERROR_SUCCESS;
}

Tree read_tree(const KeyName& key) {
  Tree tree;
  read_sub_tree(OpenKey(key, Use::kRead), key, tree);
  return tree;
}

void write_tree(const KeyName& key, const Tree& tree) {
  struct Change {
    const KeyName& key;
    const Tree& tree;
    std::exception_ptr failure;
  } change{key, tree, nullptr};
  const auto write = [](void* context) -> LSTATUS {
    auto& [name, below_it, failure] = *static_cast<Change*>(context);
    try {
      const OpenKey opened(name, Use::kWrite);
      write_sub_tree(opened, name, below_it);
      verify_sub_tree(opened, name, below_it);
      return ERROR_SUCCESS;
    } catch (...) {  // no exception may pass through the library, so it waits for the end of the change
      failure = std::current_exception();
      return ERROR_INVALID_PARAMETER;
    }
  };
  const LSTATUS status = orx_registry_change(key.root, write, &change);
  if (change.failure) std::rethrow_exception(change.failure);
  require_success(key, status, Use::kWrite);
}

}  // namespace orx::cli
