// Names of keys and values.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace orx::platform {

// The form in which names that differ in letter case alone are equal. False when the name is longer than that
// many characters, or not valid in the encoding.
bool fold_name(std::string_view name, std::size_t longest, std::string& folded);

// Takes the first level off a path; empty when there is none left. One backslash or more stand between
// levels.
std::string_view take_level(std::string_view& path);

}  // namespace orx::platform
