#include <orx/platform/code_page.h>

#include <orx/platform/posix/support/utf8.h>

#include <algorithm>
#include <bit>
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

std::size_t prefix_size(std::string_view text, std::size_t most) {
  const auto goes_beyond = [&most](char c) { return !utf8::is_continuation(c) && most-- == 0; };
  return static_cast<std::size_t>(std::find_if(text.begin(), text.end(), goes_beyond) - text.begin());
}

std::size_t truncated_size(std::string_view text, std::size_t most) {
  if (text.size() <= most) return text.size();
  constexpr std::size_t kMostContinuations = 3;
  std::size_t lead = most;
  while (lead > 0 && most - lead < kMostContinuations && utf8::is_continuation(text[lead])) --lead;
  const auto length = static_cast<std::size_t>(std::countl_one(static_cast<unsigned char>(text[lead])));
  return length > most - lead && length <= kMostContinuations + 1 ? lead : most;
}

BSTR widen(const char* text) { return utf8::to_wide(text != nullptr ? text : ""); }

}  // namespace orx::platform
