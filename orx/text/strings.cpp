#include <orx/text/strings.h>

#include <orx/base/ascii.h>
#include <orx/base/text_format.h>
#include <orx/platform/code_page.h>

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstdarg>
#include <cstring>

namespace {

const char* after_space(const char* text) {
  while (orx::is_space(*text)) ++text;
  return text;
}

// Behind a sign and digits, both of which may be missing.
const char* after_integer(const char* text) {
  if (*text == '-' || *text == '+') ++text;
  while (orx::is_digit(*text)) ++text;
  return text;
}

const char* after_fraction(const char* text) {
  if (*text == '.') ++text;
  while (orx::is_digit(*text)) ++text;
  return text;
}

}  // namespace

char* trim(char* s) {
  if (s == nullptr) return s;
  trimt(s);
  const char* first = s + std::strspn(s, " ");
  if (first != s) std::memmove(s, first, std::strlen(first) + 1);
  return s;
}

char* trimt(char* s) {
  if (s == nullptr) return s;
  std::size_t length = std::strlen(s);
  while (length > 0 && s[length - 1] == ' ') s[--length] = '\0';
  return s;
}

void upperstr(char* s) {
  if (s == nullptr) return;
  for (; *s != '\0'; ++s) *s = static_cast<char>(std::toupper(static_cast<unsigned char>(*s)));
}

char* delchar(char* s, int pos) {
  if (s == nullptr || pos < 0) return s;
  const auto at = static_cast<std::size_t>(pos);
  const std::size_t length = std::strlen(s);
  if (at < length) std::memmove(s + at, s + at + 1, length - at);
  return s;
}

char* inschar(char* s, char c, int pos) {
  if (s == nullptr) return s;
  const std::size_t length = std::strlen(s);
  const std::size_t at = length == 0 ? 0 : static_cast<std::size_t>(pos);
  if (at > length) return s;
  std::memmove(s + at + 1, s + at, length - at + 1);
  s[at] = c;
  return s;
}

int ORX_snprintf(char* buf, std::size_t n, const char* format, ...) {
  if (buf == nullptr || format == nullptr || n == 0) return -1;
  std::va_list arguments;
  va_start(arguments, format);
  const std::size_t size = std::min<std::size_t>(n, INT_MAX - 1) + 1;
  const int length = orx::format_text(buf, size, format, arguments);
  va_end(arguments);
  // A count beyond any buffer means "all of it".
  if (n < PTRDIFF_MAX) buf[n] = '\0';
  return length >= 0 && static_cast<std::size_t>(length) <= n ? length : -1;
}

char* ORX_strncpy(char* dst, const char* src, std::size_t n) {
  if (dst == nullptr) return dst;
  std::strncpy(dst, src != nullptr ? src : "", n);
  dst[n] = '\0';
  return dst;
}

bool IsNumeric(const CStringA& text) {
  if (text.IsEmpty()) return false;
  const char* const first = after_space(text);
  const char* end = after_space(after_fraction(after_integer(first)));
  if ((*end == 'e' || *end == 'E') && end != first) end = after_space(after_integer(end + 1));
  return end == text.GetString() + text.GetLength();
}
