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

const char* skip_space(const char* text) {
  while (orx::is_space(*text)) ++text;
  return text;
}

// Skips an optional sign and any number of digits, including none.
const char* skip_integer(const char* text) {
  if (*text == '-' || *text == '+') ++text;
  while (orx::is_digit(*text)) ++text;
  return text;
}

// Skips an optional point and any number of digits, including none.
const char* skip_fraction(const char* text) {
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
  // Hosts pass a count that is larger than any buffer to write the text without a limit.
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
  const char* const first = skip_space(text);
  const char* end = skip_integer(first);
  end = skip_fraction(end);
  end = skip_space(end);
  const bool has_exponent = *end == 'e' || *end == 'E';
  if (has_exponent && end != first) {
    end = skip_integer(end + 1);
    end = skip_space(end);
  }
  return end == text.GetString() + text.GetLength();  // a NUL within the text is not its end
}
