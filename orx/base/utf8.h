// UTF-8 and its conversion to wide text. Overlong forms, surrogates and everything above U+10FFFF are
// invalid. Internal to the library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace orx::utf8 {

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

// Writes a code point as one to four bytes and returns the position after them.
char* encode(std::uint32_t code_point, char* out);

// Wide text is UTF-16 where wchar_t has 16 bits, otherwise UTF-32.

// Returns false and leaves `out` unchanged if the wide text is invalid: a value above U+10FFFF, or a
// surrogate that is not part of a UTF-16 pair.
bool from_wide(std::wstring_view text, std::string& out);

// The number of wide characters of a valid text, and the conversion, which writes that number to `out`
// without a NUL.
std::size_t wide_length(std::string_view text);
void to_wide(std::string_view text, wchar_t* out);

}  // namespace orx::utf8
