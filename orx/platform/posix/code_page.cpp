#include <orx/platform/code_page.h>

#include <orx/platform/posix/utf8.h>

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

BSTR widen(const char* text) { return utf8::to_wide(text != nullptr ? text : ""); }

}  // namespace orx::platform
