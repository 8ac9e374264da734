// The locale in which texts are formatted.
#pragma once

#include <locale.h>

namespace orx::platform {

// Its numbers are those of C, its characters UTF-8 where the system has such a locale. The first call makes
// it, for which the C library reads the environment. It lives as long as the process.
locale_t format_locale();

}  // namespace orx::platform
