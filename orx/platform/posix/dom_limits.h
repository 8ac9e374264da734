// What a document may hold. The same limits bound what is loaded and what is built, so that every document
// that is saved can be loaded again.
#pragma once

#include <orx/platform/posix/utf8.h>

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace orx::platform::dom {

inline constexpr std::size_t kMaxDocumentBytes = std::size_t{128} << 20;
inline constexpr std::size_t kMaxNodes = 10'000'000;  // more than a gigabyte of memory

// libxml2 compares every attribute of an element with all the others.
inline constexpr int kMaxAttributes = 1400;

// libxml2 reads no value of 10,000,000 bytes, no name of more than 50,000 and nothing deeper than this.
inline constexpr std::size_t kMaxTextBytes = 9'900'000;
inline constexpr std::size_t kMaxNameBytes = 50'000;
inline constexpr int kMaxDepth = 256;

inline constexpr const char* kUnsupportedNamespace = "the name of a namespace is not supported";

inline bool is_forbidden(char c) {
  return static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r';
}

// Whether a document that holds the text can be read again. The first loop has no early exit, so that the
// compiler can vectorise it; most texts need no other.
inline bool is_text(std::string_view text) {
  bool has_low = false;
  bool has_high = false;
  for (const char c : text) {
    has_low |= static_cast<unsigned char>(c) < 0x20;
    has_high |= static_cast<unsigned char>(c) >= 0x80;
  }
  if (has_low && std::any_of(text.begin(), text.end(), is_forbidden)) return false;
  return !has_high || (utf8::is_valid(text) && text.find("\xEF\xBF\xBE") == text.npos &&
                       text.find("\xEF\xBF\xBF") == text.npos);
}

// libxml2 writes the name of a namespace without escaping it.
inline bool can_name_namespace(std::string_view name) { return name.find_first_of("<&\t\r\n") == name.npos; }

}  // namespace orx::platform::dom
