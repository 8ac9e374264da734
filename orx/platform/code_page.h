// Narrow text in the encoding of the process: what a byte means where multibyte characters may stand around
// it.
#pragma once

#include <orx/compat/bstr.h>

#include <cstddef>
#include <string_view>

namespace orx::platform {

// Compares without regard to the case of the letters A to Z; below, at or above 0.
int compare_no_case(const char* left, const char* right);

// The last backslash that is a character of its own, or null.
const char* last_backslash(const char* text);

// The number of characters. A byte that is part of no valid character counts as one or as none.
int count_characters(std::string_view text);

inline constexpr std::size_t kMaxCharacterBytes = 4;

// How many bytes the first `most` characters of a text have, counted in the same way.
std::size_t prefix_size(std::string_view text, std::size_t most);

// How many bytes of a text fit into `most` bytes without a character that is cut. Bytes that are not text
// count as characters of one byte.
std::size_t truncated_size(std::string_view text, std::size_t most);

// A wide copy that the caller owns (null: the empty text). Raises CAtlException: E_OUTOFMEMORY, or
// E_INVALIDARG for a text that is not valid in the encoding.
BSTR widen(const char* text);

}  // namespace orx::platform
