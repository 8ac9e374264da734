#include "registry/tree.h"

#include <orx/compat/string_a.h>
#include <orx/settings/registry.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <exception>
#include <iterator>
#include <utility>

namespace orx::cli {
namespace {

// With the name of the registry's file before it, if that is what the reason is about.
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

std::string file_of(HKEY root) {
  std::array<char, 4096> path{};
  return orx_registry_file(root, path.data(), path.size()) == 0 ? path.data() : "the registry";
}

std::string user_name() {
  for (const char* const variable : {"USER", "LOGNAME", "USERNAME"}) {
    const char* const name = std::getenv(variable);
    if (name != nullptr && *name != '\0') return name;
  }
  return "this user";
}

void check(const KeyName& key, LSTATUS status, Use use) {
  if (status != ERROR_SUCCESS) throw refusal(key, status, use);
}

class OpenKey {
 public:
  OpenKey(HKEY parent, const std::string& path, const KeyName& key, Use use) {
    check(key,
          use == Use::kRead ? RegOpenKeyExA(parent, path.c_str(), 0, KEY_READ, &key_)
                            : RegCreateKeyExA(parent, path.c_str(), 0, nullptr, 0, KEY_READ | KEY_WRITE,
                                              nullptr, &key_, nullptr),
          use);
  }
  OpenKey(const KeyName& key, Use use) : OpenKey(key.root, key.path, key, use) {}
  OpenKey(const OpenKey&) = delete;
  OpenKey& operator=(const OpenKey&) = delete;
  ~OpenKey() { RegCloseKey(key_); }

  operator HKEY() const { return key_; }

 private:
  HKEY key_ = nullptr;
};

// To tell of a key; its path is not needed.
KeyName below(const KeyName& key, const std::string& name) { return {key.root, {}, key.full + '\\' + name}; }

void require_value(const KeyName& key, const std::string& name, LSTATUS status, Use use) {
  if (status != ERROR_FILE_NOT_FOUND) return check(key, status, use);
  throw Failure(key.full, name.empty() ? "the key has no default value" : "has no value '" + name + "'");
}

StoredValue read(HKEY opened, const KeyName& key, const std::string& name) {
  StoredValue value{name, REG_NONE, {}};
  DWORD size = 256;
  LSTATUS status = ERROR_MORE_DATA;
  while (status == ERROR_MORE_DATA) {  // another program may replace it meanwhile
    value.bytes.resize(size);
    status = RegQueryValueExA(opened, name.c_str(), nullptr, &value.type,
                              reinterpret_cast<BYTE*>(value.bytes.data()), &size);
  }
  require_value(key, name, status, Use::kRead);
  value.bytes.resize(size);
  return value;
}

using NameBuffer = std::vector<char>;

NameBuffer name_buffer() { return NameBuffer(4 * ORX_REGISTRY_VALUE_NAME_LENGTH + 1); }

std::vector<StoredValue> values_of(HKEY opened, const KeyName& key) {
  std::vector<StoredValue> values;
  NameBuffer name = name_buffer();
  std::vector<BYTE> data(4096);
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
    check(key, status, Use::kRead);
    values.push_back({{name.data(), length}, type, {reinterpret_cast<const char*>(data.data()), size}});
  }
}

// All at once: the registry finds the next one quickly only if nothing else was listed meanwhile.
std::vector<Tree> sub_keys_of(HKEY opened, const KeyName& key) {
  std::vector<Tree> keys;
  NameBuffer name = name_buffer();
  for (;;) {
    auto length = static_cast<DWORD>(name.size());
    const LSTATUS status = RegEnumKeyExA(opened, static_cast<DWORD>(keys.size()), name.data(), &length,
                                         nullptr, nullptr, nullptr, nullptr);
    if (status == ERROR_NO_MORE_ITEMS) return keys;
    check(key, status, Use::kRead);
    keys.push_back({{name.data(), length}, {}, {}});
  }
}

void read_below(HKEY opened, const KeyName& key, Tree& tree) {
  tree.values = values_of(opened, key);
  tree.keys = sub_keys_of(opened, key);
  for (Tree& sub_key : tree.keys) {
    const KeyName name = below(key, sub_key.name);
    read_below(OpenKey(opened, sub_key.name, name, Use::kRead), name, sub_key);
  }
}

void set(HKEY opened, const KeyName& key, const StoredValue& value) {
  check(key,
        RegSetValueExA(opened, value.name.c_str(), 0, value.type,
                       reinterpret_cast<const BYTE*>(value.bytes.data()),
                       static_cast<DWORD>(value.bytes.size())),
        Use::kWrite);
}

void write_below(HKEY opened, const KeyName& key, const Tree& tree) {
  for (const StoredValue& value : tree.values) set(opened, key, value);
  for (const Tree& sub_key : tree.keys) {
    const KeyName name = below(key, sub_key.name);
    write_below(OpenKey(opened, sub_key.name, name, Use::kWrite), name, sub_key);
  }
}

// Names that the registry takes for one would silently lose a value.
void require_below(HKEY opened, const KeyName& key, const Tree& tree) {
  for (const StoredValue& value : tree.values) {
    const StoredValue kept = read(opened, key, value.name);
    if (kept.type == value.type && kept.bytes == value.bytes) continue;
    throw Failure(key.full, "another value has the same name as '" + value.name + "'");
  }
  for (const Tree& sub_key : tree.keys) {
    const KeyName name = below(key, sub_key.name);
    require_below(OpenKey(opened, sub_key.name, name, Use::kRead), name, sub_key);
  }
}

}  // namespace

KeyName key_named(const std::string& text) {
  const std::string name = text.substr(0, text.find('\\'));
  const auto is = [root = CStringA(name.c_str())](const char* known) {
    return root.CompareNoCase(known) == 0;
  };
  KeyName key{};
  if (is("HKCU") || is("HKEY_CURRENT_USER")) key = {HKEY_CURRENT_USER, {}, "HKCU"};
  if (is("HKLM") || is("HKEY_LOCAL_MACHINE")) key = {HKEY_LOCAL_MACHINE, {}, "HKLM"};
  if (key.root == nullptr) throw Failure(text, "a key begins with HKCU\\ or HKLM\\");
  // Without the backslashes that the registry passes over.
  for (std::size_t at = name.size(); (at = text.find_first_not_of('\\', at)) != std::string::npos;) {
    const std::string level = text.substr(at, text.find('\\', at) - at);
    at += level.size();
    key.path += key.path.empty() ? level : '\\' + level;
    key.full += '\\' + level;
  }
  return key;
}

Failure refusal(const KeyName& key, LSTATUS status, Use use) {
  if (status == ERROR_ACCESS_DENIED) {
    return {key.full,
            user_name() + (use == Use::kRead ? " may not read " : " may not write ") + file_of(key.root)};
  }
  const auto* const row = std::ranges::find(kReasons, status, [](const auto& known) { return known.status; });
  if (row == std::end(kReasons)) return {key.full, "error " + std::to_string(status)};
  return {key.full, row->is_of_file ? file_of(key.root) + ' ' + row->reason : row->reason};
}

StoredValue read_value(const KeyName& key, const std::string& name) {
  return read(OpenKey(key, Use::kRead), key, name);
}

void write_value(const KeyName& key, const StoredValue& value) { set(OpenKey(key, Use::kWrite), key, value); }

void delete_value(const KeyName& key, const std::string& name) {
  HKEY opened = nullptr;
  check(key, RegOpenKeyExA(key.root, key.path.c_str(), 0, KEY_WRITE, &opened), Use::kRead);
  const LSTATUS status = RegDeleteValueA(opened, name.c_str());
  RegCloseKey(opened);
  require_value(key, name, status, Use::kWrite);
}

bool has_sub_keys(const KeyName& key) {
  NameBuffer name = name_buffer();
  auto length = static_cast<DWORD>(name.size());
  return RegEnumKeyExA(OpenKey(key, Use::kRead), 0, name.data(), &length, nullptr, nullptr, nullptr,
                       nullptr) == ERROR_SUCCESS;
}

Tree read_tree(const KeyName& key) {
  Tree tree;
  read_below(OpenKey(key, Use::kRead), key, tree);
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
      write_below(opened, name, below_it);
      require_below(opened, name, below_it);
      return ERROR_SUCCESS;
    } catch (...) {  // through the library goes only that it failed
      failure = std::current_exception();
      return ERROR_INVALID_PARAMETER;
    }
  };
  const LSTATUS status = orx_registry_change(key.root, write, &change);
  if (change.failure) std::rethrow_exception(change.failure);
  check(key, status, Use::kWrite);
}

}  // namespace orx::cli
