// Reading numbers as the C library does, but alike in every locale. Internal to the library.
#pragma once

namespace orx::compat {

// The floating-point number at the beginning of the text, behind white space; what follows it is ignored. 0
// when there is none ("inf", "nan" and hexadecimal digits are none); too large is infinite. errno is left
// alone.
double read_double(const char* text);

}  // namespace orx::compat
