#include <orx/base/utf8.h>

#include <gtest/gtest.h>

namespace orx::utf8 {
namespace {

// Checks a text as a whole and in two pieces.
void expect_validity(std::string_view text, bool valid) {
  EXPECT_EQ(is_valid(text), valid) << text;
  const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
  for (std::size_t cut = 0; cut <= text.size(); ++cut) {
    Validator validator;
    validator.Feed(bytes, cut);
    EXPECT_EQ(validator.Feed(bytes + cut, text.size() - cut) && validator.IsComplete(), valid) << text << cut;
  }
}

TEST(Utf8, ValidatorAcceptsOnlyValidText) {
  for (const char* text : {"", "plain text of more than eight bytes", "12345678\xC2\x80\xDF\xBF",
                           "\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF",
                           "\xF0\x90\x80\x80\xF1\x80\x80\x80\xF4\x8F\xBF\xBF."})
    expect_validity(text, true);
  for (const char* bytes : {"1234567\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF",  // overlong
                            "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF", "\xC3(",
                            "\xE2\x82\xC3\xA9", "\xE2\x82"})
    expect_validity(bytes, false);
}

TEST(Utf8, EveryCodePointRoundTrips) {
  std::string text;
  for (char32_t c = 0; c <= 0x110000; c += c < 0x10800 ? 1 : 61) {
    const auto wide = static_cast<wchar_t>(c);
    const bool allowed = c <= 0x10FFFF && (c < 0xD800 || c > 0xDFFF);
    ASSERT_EQ(from_wide({&wide, 1}, text), allowed) << std::hex << std::uint32_t{c};
    if (!allowed) continue;
    wchar_t back[2] = {};
    ASSERT_EQ(wide_length(text), 1U);
    to_wide(text, back);
    ASSERT_EQ(back[0], wide);
  }
}

}  // namespace
}  // namespace orx::utf8
