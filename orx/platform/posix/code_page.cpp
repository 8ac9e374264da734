#include <orx/platform/code_page.h>

#include <orx/platform/posix/utf8.h>

#include <algorithm>
#include <cstring>

namespace orx::platform {
namespace {

int folded(char c) {
  const int byte = static_cast<unsigned char>(c);
  return byte >= 'A' && byte <= 'Z' ? byte - 'A' + 'a' : byte;
}

}  // namespace

int compare_no_case(const char* left, const char* right) {
  if (left == nullptr) left = "";
  if (right == nullptr) right = "";
  while (*left != '\0' && folded(*left) == folded(*right)) ++left, ++right;
  return folded(*left) - folded(*right);
}

// No byte of a multibyte character is a backslash in UTF-8.
const char* last_backslash(const char* text) { return std::strrchr(text, '\\'); }

int count_characters(std::string_view text) {
  return static_cast<int>(
      std::count_if(text.begin(), text.end(), [](char c) { return !utf8::is_continuation(c); }));
}

std::size_t whole_characters(std::string_view text, std::size_t size) {
  if (text.size() <= size) return text.size();
  while (size > 0 && utf8::is_continuation(text[size])) --size;
  return size;
}

BSTR widen(const char* text) { return utf8::to_wide(text != nullptr ? text : ""); }

}  // namespace orx::platform
