// Reading numbers as the C library does, but alike in every locale. Internal to the library.
#pragma once

#include <cstdint>

namespace orx {

// Both read the number at the beginning of the text, behind white space, and ignore what follows it; without
// a number they give 0. errno is left alone.

struct Number {
  double value;
  const char* end;  // behind the number; the beginning of the text when there is none
};

// A floating-point number; its exponent may stand behind a D. "inf", "nan" and hexadecimal digits are none;
// too large is infinite.
Number read_number(const char* text);
inline double read_double(const char* text) { return read_number(text).value; }

// A whole number; beyond the range it is the nearest that there is.
std::int32_t read_int32(const char* text);

}  // namespace orx
