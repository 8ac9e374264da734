// What the programs that try the store of settings share: a store in a folder of its own, and what is in it.
#pragma once

#include <orx/compat/hkey.h>

#include <sqlite3.h>
#include <stdlib.h>

#include <array>
#include <filesystem>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace orx::testing {

// Keys by their paths, which end in a backslash, and values with their type and bytes.
using Content = std::map<std::string, std::string>;

inline std::string typed(DWORD type, const void* data, std::size_t size) {
  return std::to_string(type) + ':' + std::string(static_cast<const char*>(data), size);
}

// Calls `list` with each index and a name to fill, to the last.
template <class List, class Visit>
void visit_items(List list, Visit visit) {
  std::array<char, 256> name;
  LSTATUS status = ERROR_SUCCESS;
  for (DWORD i = 0; status == ERROR_SUCCESS; ++i) {
    DWORD length = name.size();
    status = list(i, name.data(), &length);
    if (status == ERROR_SUCCESS) visit(name.data());
  }
  if (status != ERROR_NO_MORE_ITEMS) throw std::runtime_error("cannot list: " + std::to_string(status));
}

// Adds a key that is open, with all below it, and closes it.
inline void add_content(HKEY key, const std::string& path, Content& content) {
  content[path];
  const auto list_keys = [key](DWORD i, char* name, DWORD* length) {
    return RegEnumKeyExA(key, i, name, length, nullptr, nullptr, nullptr, nullptr);
  };
  visit_items(list_keys, [&](const char* name) {
    HKEY child = nullptr;
    if (RegOpenKeyExA(key, name, 0, KEY_READ, &child) != ERROR_SUCCESS) throw std::runtime_error(path + name);
    add_content(child, path + name + '\\', content);
  });
  std::vector<BYTE> data(1'000'000);
  DWORD type = 0;
  DWORD size = 0;
  const auto list_values = [&](DWORD i, char* name, DWORD* length) {
    size = static_cast<DWORD>(data.size());
    return RegEnumValueA(key, i, name, length, nullptr, &type, data.data(), &size);
  };
  visit_items(list_values, [&](const char* name) { content[path + name] = typed(type, data.data(), size); });
  RegCloseKey(key);
}

inline Content content_of_store() {
  HKEY software = nullptr;
  if (RegOpenKeyExA(HKEY_CURRENT_USER, "Software", 0, KEY_READ, &software) != 0)
    throw std::runtime_error("no root");
  Content content;
  add_content(software, "", content);
  return content;
}

// Throws what the database's own checks find.
inline void check_database(const std::string& file) {
  sqlite3* database = nullptr;
  std::string found;
  const auto add_row = [](void* text, int, char** columns, char**) {
    *static_cast<std::string*>(text) += columns[0] != nullptr ? columns[0] : "null";
    return 0;
  };
  int error = sqlite3_open_v2(file.c_str(), &database, SQLITE_OPEN_READWRITE, nullptr);
  sqlite3_busy_timeout(database, 10'000);
  if (error == SQLITE_OK)
    error =
        sqlite3_exec(database, "PRAGMA integrity_check; PRAGMA foreign_key_check", add_row, &found, nullptr);
  sqlite3_close(database);
  if (error != SQLITE_OK || found != "ok") throw std::runtime_error(sqlite3_errstr(error) + (": " + found));
}

// A folder for stores; the user's is one of them.
class StoreFolder {
 public:
  StoreFolder() {
    std::string name = std::filesystem::temp_directory_path() / "orx_XXXXXX";
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no folder");
    path_ = name;
  }
  StoreFolder(const StoreFolder&) = delete;
  StoreFolder& operator=(const StoreFolder&) = delete;
  ~StoreFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  std::string use_store(const std::string& name) const {
    const std::string file = path_ / name;
    setenv("ORX_USER_REGISTRY", file.c_str(), 1);
    return file;
  }

 private:
  std::filesystem::path path_;
};

}  // namespace orx::testing
