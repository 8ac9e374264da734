// Reading numbers as strtod and strtol do, but with the same result in every locale. Internal to the library.
//
// The functions skip white space, read the number at the beginning of the text and ignore what follows it. A
// text without a number gives 0. errno is unchanged.
#pragma once

#include <cstdint>

namespace orx {

struct Number {
  double value;
  const char* end;  // the character after the number, or the beginning of the text without a number
};

// Reads a decimal floating-point number. Its exponent may follow an E or, as Fortran writes it, a D. "inf",
// "nan" and hexadecimal numbers are not recognised. A number beyond the range of double is infinite.
Number read_number(const char* text);
inline double read_double(const char* text) { return read_number(text).value; }

// Reads a decimal integer. A number beyond the range is the largest or smallest integer.
std::int32_t read_int32(const char* text);

}  // namespace orx
