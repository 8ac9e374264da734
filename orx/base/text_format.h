// Bounded formatting with the same result in every locale. Internal to the library. Each backend of platform
// implements it, because systems differ in how a thread sets its locale.
#pragma once

#include <cstdarg>
#include <cstddef>

namespace orx {

// Formats as vsnprintf does: writes at most `size` bytes including a NUL, and returns the length of the whole
// text, or a negative value when an argument cannot be formatted. Numbers have a decimal point in every
// locale. Wide text becomes narrow text in the encoding of the process. errno is unchanged.
[[gnu::format(printf, 3, 0)]] int format_text(char* buffer, std::size_t size, const char* format,
                                              std::va_list arguments);

}  // namespace orx
