// Capitals of UTF-8 texts, from the Unicode tables of utf8proc.
#pragma once

#include <string>
#include <string_view>

namespace orx::platform {

// Converts a text to capitals, one character for each character, the same in every locale. `capitals` may be
// the string of `text`. Returns false and leaves `capitals` unchanged if the text is invalid.
bool to_capitals(std::string_view text, std::string& capitals);

}  // namespace orx::platform
