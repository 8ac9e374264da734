#include <orx/compat/text_format.h>

#include <cerrno>
#include <cstdio>

#include <locale.h>

namespace orx::compat {

int format_text(char* buffer, std::size_t size, const char* format, std::va_list arguments) {
  static const locale_t c_locale = newlocale(LC_ALL_MASK, "C", nullptr);
  const int host_errno = errno;
  const locale_t host_locale = uselocale(c_locale);
  const int length = std::vsnprintf(buffer, size, format, arguments);
  uselocale(host_locale);
  errno = host_errno;
  return length;
}

}  // namespace orx::compat
