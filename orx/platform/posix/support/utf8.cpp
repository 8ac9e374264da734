#include <orx/platform/posix/support/utf8.h>

#include <orx/base/ascii.h>
#include <orx/compat/atl_exception.h>

#include <utf8proc.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <limits>
#include <utility>

namespace orx::platform::utf8 {

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

bool is_code_point(std::uint32_t c) { return c <= 0x10FFFF && (c < 0xD800 || c > 0xDFFF); }

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

// The capital of a character by the rule of Windows for names of files and registry keys: a letter has a
// capital only if that capital's small letter is the letter itself. So a dotless i does not become I. The
// final sigma is an exception and becomes a sigma. utf8proc also gives the sharp s a capital, but Unicode's
// simple mapping, which Windows uses, does not.
static std::uint32_t to_capital(std::uint32_t c) {
  constexpr std::uint32_t kSharpS = 0xDF;
  constexpr std::uint32_t kFinalSigma = 0x3C2;
  const auto letter = static_cast<utf8proc_int32_t>(c);
  const utf8proc_int32_t upper = utf8proc_toupper(letter);
  const bool is_pair = c != kSharpS && utf8proc_tolower(upper) == letter;
  return is_pair || c == kFinalSigma ? static_cast<std::uint32_t>(upper) : c;
}

bool to_upper(std::string_view text, std::string& upper) {
  if (!is_valid(text)) return false;
  std::string capitals;
  capitals.reserve(text.size());
  while (!text.empty()) {
    const char c = text.front();
    if (static_cast<unsigned char>(c) < 0x80) {
      capitals += orx::to_upper(c);
      text.remove_prefix(1);
    } else {
      char bytes[4];
      const auto letter = static_cast<std::uint32_t>(take_first(text));
      capitals.append(bytes, encode(to_capital(letter), bytes));
    }
  }
  upper = std::move(capitals);
  return true;
}

bool from_wide(const wchar_t* text, std::size_t length, std::string& out) {
  std::string narrow;
  narrow.reserve(length);
  for (const wchar_t character : std::wstring_view(text, length)) {
    const auto c = static_cast<std::uint32_t>(character);
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

BSTR to_wide(std::string_view text) {
  if (!is_valid(text)) AtlThrow(E_INVALIDARG);
  const auto length = static_cast<std::size_t>(text.size()) -
                      static_cast<std::size_t>(std::ranges::count_if(text, is_continuation));
  if (length > std::numeric_limits<UINT>::max()) AtlThrow(E_OUTOFMEMORY);
  const BSTR wide = SysAllocStringLen(nullptr, static_cast<UINT>(length));
  if (wide == nullptr) AtlThrow(E_OUTOFMEMORY);
  for (OLECHAR* to = wide; !text.empty(); ++to) *to = static_cast<OLECHAR>(take_first(text));
  return wide;
}

}  // namespace orx::platform::utf8
