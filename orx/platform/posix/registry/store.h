// The keys and values below one root of the registry.
#pragma once

#include <orx/platform/posix/registry/database.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

namespace orx::platform {

using KeyId = std::int64_t;  // never used again, so a deleted key stays deleted

// The buffers of RegEnumKeyExA and RegQueryValueExA. `size` is the capacity before the call and the size of
// the result after it. The pointers of a name are never null; those of a value may be, as compat/hkey.h says.
struct NameOutput {
  char* name;
  DWORD* size;
};
struct ValueOutput {
  DWORD* type;
  BYTE* data;
  DWORD* size;
};

// A tree of keys with typed values, as rows of a database. Call the functions only between Begin and End of
// database(). Arguments and results are those of the functions in compat/hkey.h; paths and names are
// unchanged from the caller. The functions may raise std::bad_alloc.
class RegistryStore {
 public:
  explicit RegistryStore(const RegistryPlace& place) : database_(place) {}

  RegistryDatabase& database() { return database_; }

  LSTATUS Find(KeyId from, std::string_view path, KeyId& found);
  // Finds a key, and creates the missing levels of its path.
  LSTATUS Make(KeyId from, std::string_view path, KeyId& made, bool& is_new);
  LSTATUS Delete(KeyId from, std::string_view path);
  LSTATUS DeleteTree(KeyId from, std::string_view path);

  LSTATUS Query(KeyId key, std::string_view name, const ValueOutput& output);
  LSTATUS Set(KeyId key, std::string_view name, DWORD type, const void* data, DWORD size);
  LSTATUS DeleteValue(KeyId key, std::string_view name);

  LSTATUS ListKey(KeyId key, DWORD index, const NameOutput& output);
  LSTATUS ListValue(KeyId key, DWORD index, const NameOutput& output, const ValueOutput& value);

 private:
  // The last item that a listing has returned. The next item is searched for from there, so that listing all
  // items of a key is not quadratic.
  struct Listing {
    KeyId key = 0;
    DWORD index = 0;
    std::string folded;
  };

  // These two return ERROR_KEY_DELETED for a key that does not exist any more.
  LSTATUS BeginWriting(KeyId key);
  LSTATUS CheckExists(KeyId key);
  LSTATUS FindLevel(KeyId parent, std::string_view level, std::string& folded, KeyId& found);
  LSTATUS AddLevel(KeyId parent, std::string_view level, std::string_view folded, KeyId& made);
  LSTATUS FindDeletable(KeyId from, std::string_view path, KeyId& found);
  LSTATUS Remove(Sql sql, KeyId key);
  bool FindCached(KeyId from, std::string_view path, KeyId& found);
  void Cache(KeyId from, std::string_view path, KeyId found);
  template <class Deliver>
  LSTATUS ListItem(Sql sql, Listing& listing, KeyId key, DWORD index, Deliver deliver);

  RegistryDatabase database_;
  // Keys that were found, by the id of the key where the search began and the path. The cache is cleared when
  // a key is deleted, and when the epoch of the database has changed: then another process may have deleted
  // one, or the creation of one was undone.
  std::unordered_map<std::string, KeyId> cached_keys_;
  std::string cache_key_;
  std::uint64_t cached_epoch_ = 0;
  Listing keys_;
  Listing values_;
};

}  // namespace orx::platform
