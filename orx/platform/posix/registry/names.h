// Names of keys and values.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace orx::platform {

// Converts a name to capitals, the form by which it is found. Names that differ only in letter case have the
// same form. Returns false and leaves `folded` unchanged if the name has more than `max_characters` or is not
// valid UTF-8.
bool fold_name(std::string_view name, std::size_t max_characters, std::string& folded);

// Removes the first level from a path, with the backslashes after it, and returns it. Levels are separated by
// one or more backslashes. The path is not empty.
std::string_view take_level(std::string_view& path);

}  // namespace orx::platform
