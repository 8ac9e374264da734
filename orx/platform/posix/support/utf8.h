// UTF-8, the encoding of narrow text on this system. Overlong forms, surrogates and everything above U+10FFFF
// are invalid.
#pragma once

#include <orx/compat/bstr.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace orx::platform::utf8 {

// What the rest of a character must be: the number of its bytes, and the range of the next one. An empty
// range refuses every byte.
struct Continuation {
  unsigned char bytes_left;
  unsigned char lowest;
  unsigned char highest;
};

// Checks a text that comes in pieces. A piece may end within a character.
class Validator {
 public:
  // Checks the next piece. Returns false once the text is known to be invalid, and for every later piece.
  bool Feed(const unsigned char* bytes, std::size_t size);

  // Whether the text is valid so far and does not end within a character.
  bool IsComplete() const { return next_.bytes_left == 0; }

 private:
  Continuation next_{};
};

bool is_valid(std::string_view text);

// Whether a byte of a valid text is not the first of its character.
constexpr bool is_continuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

// Removes the first character from a valid text that is not empty, and returns its code point.
char32_t take_first(std::string_view& text);

// Converts a text to capitals, one character for each character, the same in every locale. `upper` may be the
// string of `text`. Returns false and leaves `upper` unchanged if the text is invalid.
bool to_upper(std::string_view text, std::string& upper);

// Writes a code point as one to four bytes and returns the position after them.
char* encode(std::uint32_t code_point, char* out);

// Converts wide text. Returns false and leaves `out` unchanged if a wide character is a surrogate or above
// U+10FFFF.
bool from_wide(const wchar_t* text, std::size_t length, std::string& out);

// A wide copy, which the caller releases with SysFreeString. Raises CAtlException: E_OUTOFMEMORY, or
// E_INVALIDARG for an invalid text.
BSTR to_wide(std::string_view text);

}  // namespace orx::platform::utf8
