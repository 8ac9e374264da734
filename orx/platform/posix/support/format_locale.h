// The locale in which the library formats text.
#pragma once

#include <locale.h>

namespace orx::platform {

// Numbers are formatted as in the C locale. Characters are UTF-8 if the system has the locale C.UTF-8, and
// ASCII otherwise. The first call creates the locale, for which the C library reads the environment. The
// locale is never freed.
locale_t format_locale();

}  // namespace orx::platform
