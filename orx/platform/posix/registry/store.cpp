#include <orx/platform/posix/registry/store.h>

#include <orx/platform/posix/registry/names.h>

#include <cstring>

namespace orx::platform {
namespace {

constexpr std::size_t kMaxCachedKeys = 4096;           // then the cache is cleared
constexpr std::string_view kSoftwareKey = "Software";  // every root has it, and it cannot be deleted

bool is_text(std::int64_t type) { return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ; }

LSTATUS deliver_value(std::int64_t type, std::string_view bytes, const ValueOutput& output) {
  if (output.type != nullptr) *output.type = static_cast<DWORD>(type);
  if (output.size == nullptr) return ERROR_SUCCESS;
  const DWORD capacity = *output.size;
  *output.size = static_cast<DWORD>(bytes.size());
  if (output.data == nullptr) return ERROR_SUCCESS;
  if (bytes.size() > capacity) return ERROR_MORE_DATA;
  std::memcpy(output.data, bytes.data(), bytes.size());
  // Hosts may store a text without its NUL and rely on getting it with one. The NUL is not part of the size.
  const bool lacks_nul = is_text(type) && !bytes.empty() && bytes.back() != '\0';
  if (lacks_nul && bytes.size() < capacity) output.data[bytes.size()] = '\0';
  return ERROR_SUCCESS;
}

LSTATUS deliver_name(std::string_view name, const NameOutput& output) {
  if (name.size() >= *output.size) return ERROR_MORE_DATA;
  std::memcpy(output.name, name.data(), name.size());
  output.name[name.size()] = '\0';
  *output.size = static_cast<DWORD>(name.size());
  return ERROR_SUCCESS;
}

bool fold_value_name(std::string_view name, std::string& folded) {
  return fold_name(name, ORX_REGISTRY_VALUE_NAME_LENGTH, folded);
}

}  // namespace

LSTATUS RegistryStore::Find(KeyId from, std::string_view path, KeyId& found) {
  if (path.starts_with('\\')) return ERROR_BAD_PATHNAME;
  const LSTATUS readable = database_.ReadStatus();
  const bool is_root = from == kRootKey && path.empty();
  if (is_root) found = from;
  if (is_root && readable == ERROR_FILE_NOT_FOUND) return ERROR_SUCCESS;  // a root exists without a file
  if (readable != ERROR_SUCCESS) return readable;
  if (FindCached(from, path, found)) return ERROR_SUCCESS;
  if (const LSTATUS status = CheckExists(from); status != ERROR_SUCCESS) return status;
  KeyId key = from;
  std::string folded;
  for (std::string_view rest = path; !rest.empty();) {
    const LSTATUS status = FindLevel(key, take_level(rest), folded, key);
    if (status != ERROR_SUCCESS) return status;
  }
  Cache(from, path, key);
  found = key;
  return ERROR_SUCCESS;
}

// A key that exists is found without a write. Otherwise all levels are searched for again after BeginWriting,
// because another process may have created some of them in between.
LSTATUS RegistryStore::Make(KeyId from, std::string_view path, KeyId& made, bool& is_new) {
  is_new = false;
  LSTATUS status = Find(from, path, made);
  if (status != ERROR_FILE_NOT_FOUND) return status;
  status = BeginWriting(from);
  KeyId key = from;
  std::string folded;
  for (std::string_view rest = path; status == ERROR_SUCCESS && !rest.empty();) {
    const std::string_view level = take_level(rest);
    status = FindLevel(key, level, folded, key);
    is_new = status == ERROR_FILE_NOT_FOUND;
    if (is_new) status = AddLevel(key, level, folded, key);
  }
  if (status == ERROR_SUCCESS) made = key;
  return status;
}

LSTATUS RegistryStore::Delete(KeyId from, std::string_view path) {
  KeyId key = 0;
  if (const LSTATUS status = FindDeletable(from, path, key); status != ERROR_SUCCESS) return status;
  {
    Run run(database_.Prepare(Sql::kHasChildren));
    const LSTATUS has_children = database_.StepToRow(run.Bind(key));
    if (has_children == ERROR_SUCCESS) return ERROR_ACCESS_DENIED;
    if (has_children != ERROR_FILE_NOT_FOUND) return has_children;
  }
  return Remove(Sql::kDeleteKey, key);
}

LSTATUS RegistryStore::DeleteTree(KeyId from, std::string_view path) {
  // An empty path deletes what is below the key, and would delete the key "Software" of a root.
  if (path.empty() && from == kRootKey) return ERROR_ACCESS_DENIED;
  KeyId key = from;
  const LSTATUS status = path.empty() ? BeginWriting(from) : FindDeletable(from, path, key);
  if (status != ERROR_SUCCESS) return status;
  return Remove(path.empty() ? Sql::kDeleteChildren : Sql::kDeleteKey, key);
}

// Only a value that is not found needs a second query, which distinguishes a missing value from a deleted
// key.
LSTATUS RegistryStore::Query(KeyId key, std::string_view name, const ValueOutput& output) {
  std::string folded;
  LSTATUS status = fold_value_name(name, folded) ? database_.ReadStatus() : LSTATUS{ERROR_FILE_NOT_FOUND};
  if (status == ERROR_SUCCESS) {
    Run run(database_.Prepare(Sql::kFindValue));
    status = database_.StepToRow(run.Bind(key).Bind(folded));
    if (status == ERROR_SUCCESS) return deliver_value(run.Integer(0), run.Bytes(1), output);
  }
  if (status != ERROR_FILE_NOT_FOUND) return status;
  const LSTATUS exists = key != kRootKey ? CheckExists(key) : LSTATUS{ERROR_SUCCESS};
  if (exists != ERROR_SUCCESS) return exists;
  if (output.type != nullptr) *output.type = REG_NONE;
  return status;
}

LSTATUS RegistryStore::Set(KeyId key, std::string_view name, DWORD type, const void* data, DWORD size) {
  std::string folded;
  if (!fold_value_name(name, folded)) return ERROR_INVALID_PARAMETER;
  if (const LSTATUS status = BeginWriting(key); status != ERROR_SUCCESS) return status;
  Run run(database_.Prepare(Sql::kSetValue));
  return database_.StepToEnd(run.Bind(key).Bind(name).Bind(folded).Bind(type).Bind(data, size));
}

LSTATUS RegistryStore::DeleteValue(KeyId key, std::string_view name) {
  std::string folded;
  if (!fold_value_name(name, folded)) return ERROR_FILE_NOT_FOUND;
  if (const LSTATUS status = BeginWriting(key); status != ERROR_SUCCESS) return status;
  Run run(database_.Prepare(Sql::kDeleteValue));
  return database_.StepToRow(run.Bind(key).Bind(folded));
}

LSTATUS RegistryStore::ListKey(KeyId key, DWORD index, const NameOutput& output) {
  return ListItem(Sql::kListKeys, keys_, key, index,
                  [&](Run& run) { return deliver_name(run.Bytes(0), output); });
}

LSTATUS RegistryStore::ListValue(KeyId key, DWORD index, const NameOutput& output, const ValueOutput& value) {
  return ListItem(Sql::kListValues, values_, key, index, [&](Run& run) {
    const LSTATUS status = deliver_name(run.Bytes(0), output);
    return status == ERROR_SUCCESS ? deliver_value(run.Integer(2), run.Bytes(3), value) : status;
  });
}

LSTATUS RegistryStore::BeginWriting(KeyId key) {
  const LSTATUS status = database_.BeginWriting();
  return status == ERROR_SUCCESS ? CheckExists(key) : status;
}

LSTATUS RegistryStore::CheckExists(KeyId key) {
  if (key == kRootKey) return database_.ReadStatus();
  Run run(database_.Prepare(Sql::kKeyExists));
  const LSTATUS status = database_.StepToRow(run.Bind(key));
  return status == ERROR_FILE_NOT_FOUND ? LSTATUS{ERROR_KEY_DELETED} : status;
}

LSTATUS RegistryStore::FindLevel(KeyId parent, std::string_view level, std::string& folded, KeyId& found) {
  if (!fold_name(level, ORX_REGISTRY_KEY_NAME_LENGTH, folded)) return ERROR_INVALID_PARAMETER;
  Run run(database_.Prepare(Sql::kFindKey));
  const LSTATUS status = database_.StepToRow(run.Bind(parent).Bind(folded));
  if (status == ERROR_SUCCESS) found = run.Integer(0);
  return status;
}

LSTATUS RegistryStore::AddLevel(KeyId parent, std::string_view level, std::string_view folded, KeyId& made) {
  {
    Run depth(database_.Prepare(Sql::kKeyDepth));
    const LSTATUS status = database_.StepToRow(depth.Bind(parent).Bind(ORX_REGISTRY_DEPTH));
    if (status != ERROR_SUCCESS) return status;
    if (depth.Integer(0) >= ORX_REGISTRY_DEPTH) return ERROR_INVALID_PARAMETER;
  }
  Run run(database_.Prepare(Sql::kAddKey));
  const LSTATUS status = database_.StepToRow(run.Bind(parent).Bind(level).Bind(folded));
  if (status == ERROR_SUCCESS) made = run.Integer(0);
  return status;
}

// Finds a key that may be deleted, and begins to write. The key is searched for twice, because another
// process may have deleted it before BeginWriting.
LSTATUS RegistryStore::FindDeletable(KeyId from, std::string_view path, KeyId& found) {
  if (const LSTATUS status = Find(from, path, found); status != ERROR_SUCCESS) return status;
  if (found == kRootKey) return ERROR_ACCESS_DENIED;
  KeyId software = 0;
  const bool is_software = Find(kRootKey, kSoftwareKey, software) == ERROR_SUCCESS && found == software;
  if (is_software) return ERROR_ACCESS_DENIED;
  if (const LSTATUS status = database_.BeginWriting(); status != ERROR_SUCCESS) return status;
  return Find(from, path, found);
}

LSTATUS RegistryStore::Remove(Sql sql, KeyId key) {
  cached_keys_.clear();
  Run run(database_.Prepare(sql));
  return database_.StepToEnd(run.Bind(key));
}

bool RegistryStore::FindCached(KeyId from, std::string_view path, KeyId& found) {
  if (cached_epoch_ != database_.epoch()) cached_keys_.clear();
  cached_epoch_ = database_.epoch();
  cache_key_.assign(reinterpret_cast<const char*>(&from), sizeof from).append(path);
  const auto known = cached_keys_.find(cache_key_);
  if (known != cached_keys_.end()) found = known->second;
  return known != cached_keys_.end();
}

void RegistryStore::Cache(KeyId from, std::string_view path, KeyId found) {
  if (cached_keys_.size() >= kMaxCachedKeys) cached_keys_.clear();
  cache_key_.assign(reinterpret_cast<const char*>(&from), sizeof from).append(path);
  cached_keys_.emplace(cache_key_, found);
}

template <class Deliver>
LSTATUS RegistryStore::ListItem(Sql sql, Listing& listing, KeyId key, DWORD index, Deliver deliver) {
  LSTATUS status = database_.ReadStatus();
  if (status != ERROR_SUCCESS) return status == ERROR_FILE_NOT_FOUND ? LSTATUS{ERROR_NO_MORE_ITEMS} : status;
  // Continue with the names after the last item, which may be deleted by now: the least name that follows it
  // is that name and a zero byte. An index that is not greater than the last one begins a new listing.
  const bool continues = listing.key == key && index > listing.index;
  if (!continues) listing = {};
  const std::string least = continues ? listing.folded + '\0' : "";
  const DWORD offset = continues ? index - listing.index - 1 : index;
  {
    Run run(database_.Prepare(sql));
    status = database_.StepToRow(run.Bind(key).Bind(least).Bind(offset));
    if (status == ERROR_SUCCESS) {
      status = deliver(run);
      listing = {key, index, std::string(run.Bytes(1))};
      return status;
    }
  }
  if (status != ERROR_FILE_NOT_FOUND) return status;
  const LSTATUS exists = CheckExists(key);
  return exists == ERROR_SUCCESS ? LSTATUS{ERROR_NO_MORE_ITEMS} : exists;
}

}  // namespace orx::platform
