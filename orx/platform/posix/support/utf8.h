// UTF-8, the encoding of narrow text on this system: no overlong forms, no surrogates, nothing above
// U+10FFFF.
#pragma once

#include <orx/compat/bstr.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace orx::platform::utf8 {

// The bytes that may come next within a character; an empty range refuses every byte.
struct Continuation {
  unsigned char bytes_left;
  unsigned char lowest;
  unsigned char highest;
};

// Checks a text that comes in pieces, which may cut characters.
class Validator {
 public:
  // False once the text is known to be invalid, from then on always.
  bool Feed(const unsigned char* bytes, std::size_t size);

  // Valid so far, and not in the middle of a character.
  bool Complete() const { return next_.bytes_left == 0; }

 private:
  Continuation next_{};
};

bool is_valid(std::string_view text);

// Whether a byte of a valid text belongs to the character before it.
constexpr bool is_continuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

// Takes the first character off a valid text that is not empty.
char32_t take_first(std::string_view& text);

// In capitals, one for each letter, whatever the locale. False, with `upper` unchanged, for a text that is
// not valid.
bool to_upper(std::string_view text, std::string& upper);

// Writes a code point, in at most four bytes; the result is behind them.
char* encode(std::uint32_t code_point, char* out);

// False, and `out` unchanged, when a wide character is no code point of text.
bool from_wide(const wchar_t* text, std::size_t length, std::string& out);

// The caller owns the copy. Raises CAtlException: E_OUTOFMEMORY, or E_INVALIDARG for a text that is not
// valid.
BSTR to_wide(std::string_view text);

}  // namespace orx::platform::utf8
