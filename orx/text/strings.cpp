#include <orx/text/strings.h>

#include <orx/compat/text_format.h>
#include <orx/platform/code_page.h>

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstdarg>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace {

std::string_view trim_white_space(std::string_view text) {
  const auto is_ink = [](char c) { return !orx::platform::is_space(c); };
  const auto first = std::find_if(text.begin(), text.end(), is_ink);
  const auto last = std::find_if(text.rbegin(), text.rend(), is_ink).base();
  return first < last ? std::string_view(first, last) : std::string_view();
}

// Digits with a sign before them and as many points as allowed; digits may be missing.
bool is_plain_number(std::string_view text, std::ptrdiff_t points_allowed) {
  if (text.starts_with('-') || text.starts_with('+')) text.remove_prefix(1);
  if (std::ranges::count(text, '.') > points_allowed) return false;
  return std::ranges::all_of(text, [](char c) { return c == '.' || (c >= '0' && c <= '9'); });
}

bool is_mantissa(std::string_view text) {
  return !text.empty() && is_plain_number(trim_white_space(text), 1);
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
  const int length = orx::compat::format_text(buf, size, format, arguments);
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
  const std::string_view whole(text.GetString(), static_cast<std::size_t>(text.GetLength()));
  if (whole.empty()) return false;
  const std::string_view number = trim_white_space(whole);
  const std::size_t marker = number.find_first_of("eE");
  if (marker == std::string_view::npos) return is_plain_number(number, 1);
  // A second marker is no digit, so the exponent refuses it.
  return is_mantissa(number.substr(0, marker)) && is_plain_number(number.substr(marker + 1), 0);
}
