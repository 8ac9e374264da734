// Bounded formatting that the locale of the host does not change. Internal to the library.
#pragma once

#include <orx/compat/export.h>

#include <cstdarg>
#include <cstddef>

#include <locale.h>

namespace orx::compat {

// As vsnprintf: the length of the whole text, or negative when the format cannot be carried out; at most
// `size` bytes are written, the last of them a NUL. In every locale numbers have a decimal point and wide
// text becomes UTF-8; errno is left alone.
int format_text(char* buffer, std::size_t size, const char* format, std::va_list arguments) ORX_PRINTF(3, 0);

// The locale in which texts are formatted. The first call makes it, for which the C library reads the
// environment.
locale_t format_locale();

}  // namespace orx::compat
