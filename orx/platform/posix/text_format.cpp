#include <orx/base/text_format.h>

#include <cerrno>
#include <cstdio>

namespace orx::compat {
namespace {

// Numbers and all else as in C, but wide text has all its characters, where the system has such a locale.
locale_t made_locale() {
  const locale_t unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  return unicode != nullptr ? unicode : newlocale(LC_ALL_MASK, "C", nullptr);
}

}  // namespace

locale_t format_locale() {
  static const locale_t locale = made_locale();
  return locale;
}

int format_text(char* buffer, std::size_t size, const char* format, std::va_list arguments) {
  const int host_errno = errno;
  const locale_t host_locale = uselocale(format_locale());
  errno = host_errno;  // for %m
  const int length = std::vsnprintf(buffer, size, format, arguments);
  uselocale(host_locale);
  errno = host_errno;
  return length;
}

}  // namespace orx::compat
