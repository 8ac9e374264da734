// Bounded formatting that the locale of the host does not change. Internal to the library; each system's
// backend in platform implements it, since setting a locale for one thread is a matter of the system.
#pragma once

#include <cstdarg>
#include <cstddef>

namespace orx {

// Like vsnprintf: returns the length of the whole text, or a negative value when the format cannot be carried
// out. Writes at most `size` bytes, the last of them a NUL. In every locale numbers have a decimal point and
// wide text becomes narrow text in the encoding of the process. errno is left alone.
[[gnu::format(printf, 3, 0)]] int format_text(char* buffer, std::size_t size, const char* format,
                                              std::va_list arguments);

}  // namespace orx
