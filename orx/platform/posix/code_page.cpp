#include <orx/platform/code_page.h>

#include <orx/base/ascii.h>
#include <orx/base/utf8.h>
#include <orx/compat/atl_exception.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>

namespace orx::platform {
namespace {

constexpr std::size_t kMaxContinuations = kMaxCharacterBytes - 1;

// As an unsigned value, so that letters beyond ASCII are greater than those of ASCII.
int lower_case(char c) { return static_cast<unsigned char>(to_lower(c)); }

}  // namespace

int compare_no_case(const char* left, const char* right) {
  if (left == nullptr) left = "";
  if (right == nullptr) right = "";
  while (*left != '\0' && lower_case(*left) == lower_case(*right)) {
    ++left;
    ++right;
  }
  return lower_case(*left) - lower_case(*right);
}

// In UTF-8 no multibyte character contains the byte of a backslash.
const char* last_backslash(const char* text) { return std::strrchr(text, '\\'); }

int count_characters(std::string_view text) {
  return static_cast<int>(
      std::count_if(text.begin(), text.end(), [](char c) { return !utf8::is_continuation(c); }));
}

std::size_t prefix_size(std::string_view text, std::size_t characters) {
  std::size_t size = 0;
  std::size_t begun = 0;
  for (; size < text.size(); ++size) {
    if (utf8::is_continuation(text[size])) continue;
    if (begun == characters) break;
    ++begun;
  }
  return size;
}

std::size_t truncated_size(std::string_view text, std::size_t capacity) {
  if (text.size() <= capacity) return text.size();
  // The cut is before text[capacity]. Look back for the lead byte of the character that has this byte.
  std::size_t lead = capacity;
  while (lead > 0 && capacity - lead < kMaxContinuations && utf8::is_continuation(text[lead])) --lead;
  // The number of leading ones in a lead byte is the number of bytes of its character. It is 1 for a
  // continuation, and more than 4 for a byte that is never part of a text.
  const auto length = static_cast<std::size_t>(std::countl_one(static_cast<unsigned char>(text[lead])));
  const bool is_cut = length > capacity - lead && length <= kMaxCharacterBytes;
  return is_cut ? lead : capacity;
}

BSTR widen(const char* text) {
  const std::string_view narrow = text != nullptr ? text : "";
  if (!utf8::is_valid(narrow)) AtlThrow(E_INVALIDARG);
  const std::size_t length = utf8::wide_length(narrow);
  if (length > std::numeric_limits<UINT>::max()) AtlThrow(E_OUTOFMEMORY);
  const BSTR wide = SysAllocStringLen(nullptr, static_cast<UINT>(length));
  if (wide == nullptr) AtlThrow(E_OUTOFMEMORY);
  utf8::to_wide(narrow, wide);
  return wide;
}

}  // namespace orx::platform
