#include <orx/platform/posix/support/letter_case.h>

#include <orx/base/ascii.h>
#include <orx/base/utf8.h>

#include <utf8proc.h>

#include <cstdint>
#include <utility>

namespace orx::platform {
namespace {

// The capital of a character by the rule of Windows for names of files and registry keys: a letter has a
// capital only if that capital's small letter is the letter itself. So a dotless i does not become I. The
// final sigma is an exception and becomes a sigma. utf8proc also gives the sharp s a capital, but Unicode's
// simple mapping, which Windows uses, does not.
std::uint32_t to_capital(std::uint32_t c) {
  constexpr std::uint32_t kSharpS = 0xDF;
  constexpr std::uint32_t kFinalSigma = 0x3C2;
  const auto letter = static_cast<utf8proc_int32_t>(c);
  const utf8proc_int32_t upper = utf8proc_toupper(letter);
  const bool is_pair = c != kSharpS && utf8proc_tolower(upper) == letter;
  return is_pair || c == kFinalSigma ? static_cast<std::uint32_t>(upper) : c;
}

}  // namespace

bool to_capitals(std::string_view text, std::string& capitals) {
  if (!utf8::is_valid(text)) return false;
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    const char c = text.front();
    if (static_cast<unsigned char>(c) < 0x80) {
      result += to_upper(c);
      text.remove_prefix(1);
    } else {
      char bytes[4];
      const auto letter = static_cast<std::uint32_t>(utf8::take_first(text));
      result.append(bytes, utf8::encode(to_capital(letter), bytes));
    }
  }
  capitals = std::move(result);
  return true;
}

}  // namespace orx::platform
