// One root of the registry: a tree of keys with typed values.
#pragma once

#include <orx/platform/posix/registry/database.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

namespace orx::platform {

using KeyId = std::int64_t;  // never given twice, so that a deleted key stays deleted

// Where a name or a value goes; each pointer may be null, see RegQueryValueExA and RegEnumKeyExA.
struct NameOutput {
  char* name;
  DWORD* size;
};
struct ValueOutput {
  DWORD* type;
  BYTE* data;
  DWORD* size;
};

// Everything happens between the database's Begin and its End. Paths and names are those of callers, see
// compat/hkey.h; the results, too.
class RegistryStore {
 public:
  explicit RegistryStore(const RegistryPlace& place) : database_(place) {}

  RegistryDatabase& database() { return database_; }

  LSTATUS Find(KeyId from, std::string_view path, KeyId& found);
  // Finds it, or makes the levels that are missing.
  LSTATUS Make(KeyId from, std::string_view path, KeyId& made, bool& is_new);
  LSTATUS Delete(KeyId from, std::string_view path);
  LSTATUS DeleteTree(KeyId from, std::string_view path);

  LSTATUS Query(KeyId key, std::string_view name, const ValueOutput& output);
  LSTATUS Set(KeyId key, std::string_view name, DWORD type, const void* data, DWORD size);
  LSTATUS DeleteValue(KeyId key, std::string_view name);

  LSTATUS ListKey(KeyId key, DWORD index, const NameOutput& output);
  LSTATUS ListValue(KeyId key, DWORD index, const NameOutput& output, const ValueOutput& value);

 private:
  // Where a listing stands, so that the next item need not be counted from the first.
  struct Listing {
    KeyId key = 0;
    DWORD index = 0;
    std::string folded;
  };

  // ERROR_KEY_DELETED for a key that is gone.
  LSTATUS BeginWriting(KeyId key);
  LSTATUS Exists(KeyId key);
  LSTATUS FindLevel(KeyId parent, std::string_view level, std::string& folded, KeyId& found);
  LSTATUS AddLevel(KeyId parent, std::string_view level, std::string_view folded, KeyId& made);
  LSTATUS FindDeletable(KeyId from, std::string_view path, KeyId& found);
  LSTATUS Remove(Sql sql, KeyId key);
  bool FindCached(KeyId from, std::string_view path, KeyId& found);
  void Cache(KeyId from, std::string_view path, KeyId found);
  template <class Deliver>
  LSTATUS ListItem(Sql sql, Listing& listing, KeyId key, DWORD index, Deliver deliver);

  RegistryDatabase database_;
  // Keys found before, by where the search began and the path; good until a key is deleted or another process
  // writes.
  std::unordered_map<std::string, KeyId> cached_keys_;
  std::string cache_key_;
  std::uint64_t cached_epoch_ = 0;
  Listing keys_;
  Listing values_;
};

}  // namespace orx::platform
