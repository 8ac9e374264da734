// Keys of the registry and their contents. Every function raises Failure, which names the key, when it cannot
// do its work.
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
  std::string path;  // below the root; empty for the root itself
  std::string full;  // beginning with HKCU or HKLM, for messages
};

// Reads HKCU\..., HKEY_CURRENT_USER\..., HKLM\... or HKEY_LOCAL_MACHINE\..., in any letter case.
KeyName parse_key(const std::string& text);

// A key and everything below it, in the order of the names.
struct Tree {
  std::string name;
  std::vector<StoredValue> values;
  std::vector<Tree> keys;
};

enum class Use { kRead, kWrite };

// The reason for an error of the registry, as a text about the key.
Failure registry_failure(const KeyName& key, LSTATUS status, Use use);

StoredValue read_value(const KeyName& key, const std::string& name);
// Creates the key if it is missing.
void write_value(const KeyName& key, const StoredValue& value);
void delete_value(const KeyName& key, const std::string& name);

bool has_sub_keys(const KeyName& key);
Tree read_tree(const KeyName& key);
// Adds the tree to the key, and replaces values of the same name. A failure changes nothing.
void write_tree(const KeyName& key, const Tree& tree);

}  // namespace orx::cli
