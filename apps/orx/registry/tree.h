// Keys of the registry with what they hold. What cannot be done raises Failure, which names the key.
#pragma once

#include <orx/compat/hkey.h>

#include <cstddef>
#include <string>
#include <vector>

#include "failure.h"
#include "registry/values.h"

namespace orx::cli {

inline constexpr std::size_t kDeepestLevel = ORX_REGISTRY_DEPTH - 1;  // below the root

struct KeyName {
  HKEY root;
  std::string path;  // below the root; empty: the root itself
  std::string full;  // HKCU\... or HKLM\...
};

// From HKCU\..., HKEY_CURRENT_USER\..., HKLM\... or HKEY_LOCAL_MACHINE\..., in any letter case.
KeyName key_named(const std::string& text);

// A key with all below it, in the order of the names.
struct Tree {
  std::string name;
  std::vector<StoredValue> values;
  std::vector<Tree> keys;
};

enum class Use { kRead, kWrite };

// Why the registry refused to use a key.
Failure refusal(const KeyName& key, LSTATUS status, Use use);

StoredValue read_value(const KeyName& key, const std::string& name);
// The key is made if it is missing.
void write_value(const KeyName& key, const StoredValue& value);
void delete_value(const KeyName& key, const std::string& name);

bool has_sub_keys(const KeyName& key);
Tree read_tree(const KeyName& key);
// Adds to what is there, and replaces the values of the same name; all or nothing.
void write_tree(const KeyName& key, const Tree& tree);

}  // namespace orx::cli
