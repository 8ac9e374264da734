// Narrow text in the encoding of the process: UTF-8 on POSIX, the ANSI code page on Windows. A character may
// have several bytes. No function blocks, and any thread may call them.
#pragma once

#include <orx/compat/bstr.h>

#include <cstddef>
#include <string_view>

namespace orx::platform {

// The most bytes that a character has in any encoding.
inline constexpr std::size_t kMaxCharacterBytes = 4;

// Compares two texts; only the letters A to Z match in either case. The result is negative, 0 or positive, as
// in strcmp. Null is the empty text.
int compare_no_case(const char* left, const char* right);

// The last backslash that is a character and not a part of one, or null. `text` is not null.
const char* last_backslash(const char* text);

// The number of characters in `text`. An invalid byte counts as one character or as no character.
int count_characters(std::string_view text);

// The size in bytes of the first `characters` characters of `text`; the size of the whole text if it has
// fewer. Invalid bytes are counted as in count_characters.
std::size_t prefix_size(std::string_view text, std::size_t characters);

// The size in bytes to which `text` must be cut to fit into `capacity` bytes with its last character
// complete. Invalid bytes count as characters of one byte.
std::size_t truncated_size(std::string_view text, std::size_t capacity);

// A wide copy, which the caller releases with SysFreeString. Null is the empty text. Raises CAtlException:
// E_OUTOFMEMORY, or E_INVALIDARG for a text that is not valid in the encoding.
BSTR widen(const char* text);

}  // namespace orx::platform
