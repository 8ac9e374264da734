#include <orx/base/utf8.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <utility>

namespace orx::utf8 {

namespace {

constexpr Continuation kNever{1, 1, 0};

struct LeadRange {
  unsigned char first;
  unsigned char last;
  Continuation next;
};

// What may follow each lead byte. The narrower ranges exclude overlong forms (E0, F0), surrogates (ED) and
// code points above U+10FFFF (F4). Bytes without a row are never a lead byte.
constexpr LeadRange kLeadRanges[] = {
    {0x00, 0x7F, {0, 0, 0}},       {0xC2, 0xDF, {1, 0x80, 0xBF}}, {0xE0, 0xE0, {2, 0xA0, 0xBF}},
    {0xE1, 0xEC, {2, 0x80, 0xBF}}, {0xED, 0xED, {2, 0x80, 0x9F}}, {0xEE, 0xEF, {2, 0x80, 0xBF}},
    {0xF0, 0xF0, {3, 0x90, 0xBF}}, {0xF1, 0xF3, {3, 0x80, 0xBF}}, {0xF4, 0xF4, {3, 0x80, 0x8F}},
};

constexpr std::array<Continuation, 256> kAfterLead = [] {
  std::array<Continuation, 256> table{};
  table.fill(kNever);
  for (const LeadRange& range : kLeadRanges) {
    for (std::size_t lead = range.first; lead <= range.last; ++lead) table[lead] = range.next;
  }
  return table;
}();

// Returns the first byte that is not ASCII, or `end`. Eight bytes are checked at once, because most text is
// ASCII.
const unsigned char* skip_ascii(const unsigned char* bytes, const unsigned char* end) {
  constexpr std::uint64_t kHighBits = 0x8080808080808080U;
  std::uint64_t eight;
  for (; end - bytes >= static_cast<std::ptrdiff_t>(sizeof eight); bytes += sizeof eight) {
    std::memcpy(&eight, bytes, sizeof eight);
    if ((eight & kHighBits) != 0) break;
  }
  return std::find_if(bytes, end, [](unsigned char byte) { return byte >= 0x80; });
}

constexpr bool kHasUtf16 = sizeof(wchar_t) == 2;
constexpr char32_t kFirstHighSurrogate = 0xD800;
constexpr char32_t kFirstLowSurrogate = 0xDC00;
constexpr char32_t kLastSurrogate = 0xDFFF;
constexpr unsigned char kFirstLeadOfFourBytes = 0xF0;

bool is_code_point(char32_t c) { return c <= 0x10FFFF && (c < kFirstHighSurrogate || c > kLastSurrogate); }

// Removes the first character from a wide text that is not empty. Returns a value that is not a code point
// for a surrogate without its partner.
char32_t take_first_wide(std::wstring_view& text) {
  const auto first = static_cast<char32_t>(text.front());
  text.remove_prefix(1);
  if constexpr (kHasUtf16) {
    const bool is_high = first >= kFirstHighSurrogate && first < kFirstLowSurrogate;
    const auto second = static_cast<char32_t>(is_high && !text.empty() ? text.front() : 0);
    if (second >= kFirstLowSurrogate && second <= kLastSurrogate) {
      text.remove_prefix(1);
      return 0x10000 + ((first - kFirstHighSurrogate) << 10) + (second - kFirstLowSurrogate);
    }
  }
  return first;
}

}  // namespace

char32_t take_first(std::string_view& text) {
  const auto lead = static_cast<unsigned char>(text.front());
  const std::size_t more = kAfterLead[lead].bytes_left;
  char32_t c = more == 0 ? lead : lead & (0x3FU >> more);
  for (const char byte : text.substr(1, more)) c = c << 6 | (static_cast<unsigned char>(byte) & 0x3FU);
  text.remove_prefix(1 + more);
  return c;
}

bool Validator::Feed(const unsigned char* bytes, std::size_t size) {
  const unsigned char* const end = bytes + size;
  Continuation next = next_;
  while (bytes != end) {
    if (next.bytes_left == 0) {
      bytes = skip_ascii(bytes, end);
      if (bytes == end) break;
      next = kAfterLead[*bytes];
      ++bytes;
      continue;
    }
    if (*bytes < next.lowest || *bytes > next.highest) {
      next_ = kNever;
      return false;
    }
    ++bytes;
    next = {static_cast<unsigned char>(next.bytes_left - 1), 0x80, 0xBF};
  }
  next_ = next;
  return true;
}

bool is_valid(std::string_view text) {
  Validator validator;
  return validator.Feed(reinterpret_cast<const unsigned char*>(text.data()), text.size()) &&
         validator.IsComplete();
}

char* encode(std::uint32_t code_point, char* out) {
  const auto put = [&out](std::uint32_t byte) { *out++ = static_cast<char>(byte); };
  const auto put_tail = [&](unsigned shift) { put(0x80 | (code_point >> shift & 0x3F)); };
  if (code_point < 0x80) {
    put(code_point);
  } else if (code_point < 0x800) {
    put(0xC0 | code_point >> 6);
    put_tail(0);
  } else if (code_point < 0x10000) {
    put(0xE0 | code_point >> 12);
    put_tail(6);
    put_tail(0);
  } else {
    put(0xF0 | code_point >> 18);
    put_tail(12);
    put_tail(6);
    put_tail(0);
  }
  return out;
}

bool from_wide(std::wstring_view text, std::string& out) {
  std::string narrow;
  narrow.reserve(text.size());
  while (!text.empty()) {
    const char32_t c = take_first_wide(text);
    if (c < 0x80) {
      narrow += static_cast<char>(c);
      continue;
    }
    if (!is_code_point(c)) return false;
    char bytes[4];
    narrow.append(bytes, encode(c, bytes));
  }
  out = std::move(narrow);
  return true;
}

std::size_t wide_length(std::string_view text) {
  std::size_t length = 0;
  for (const char byte : text) {
    if (!is_continuation(byte)) ++length;
    if (kHasUtf16 && static_cast<unsigned char>(byte) >= kFirstLeadOfFourBytes) ++length;
  }
  return length;
}

void to_wide(std::string_view text, wchar_t* out) {
  while (!text.empty()) {
    const char32_t c = take_first(text);
    if (kHasUtf16 && c > 0xFFFF) {
      *out++ = static_cast<wchar_t>(kFirstHighSurrogate + ((c - 0x10000) >> 10));
      *out++ = static_cast<wchar_t>(kFirstLowSurrogate + (c & 0x3FF));
    } else {
      *out++ = static_cast<wchar_t>(c);
    }
  }
}

}  // namespace orx::utf8
