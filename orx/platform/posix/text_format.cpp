#include <orx/base/text_format.h>

#include <orx/base/errno_guard.h>
#include <orx/platform/posix/support/format_locale.h>

#include <cerrno>
#include <cstdio>

namespace orx {

// Made once and never freed: other threads may use it until the process ends.
locale_t platform::format_locale() {
  static const locale_t locale = [] {
    const locale_t unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    return unicode != nullptr ? unicode : newlocale(LC_ALL_MASK, "C", nullptr);
  }();
  return locale;
}

int format_text(char* buffer, std::size_t size, const char* format, std::va_list arguments) {
  const ErrnoGuard errno_guard;
  const int host_errno = errno;
  const locale_t host_locale = uselocale(platform::format_locale());
  errno = host_errno;  // %m formats errno, and uselocale may have changed it
  const int length = std::vsnprintf(buffer, size, format, arguments);
  uselocale(host_locale);
  return length;
}

}  // namespace orx
