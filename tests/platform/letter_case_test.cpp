#include <orx/platform/posix/support/letter_case.h>

#include <gtest/gtest.h>

namespace orx::platform {
namespace {

TEST(LetterCase, CapitalsAreThoseOfWindows) {
  const std::pair<const char*, const char*> kRows[] = {
      {"müller Ünïcode", "MÜLLER ÜNÏCODE"},
      {"жук ως ǆ ა", "ЖУК ΩΣ Ǆ Ა"},
      {"ß ẞ ı İ ſ µ ǅ", "ß ẞ ı İ ſ µ ǅ"},  // without a capital, or with that of another letter
  };
  std::string capitals;
  for (const auto& [text, expected] : kRows) {
    EXPECT_TRUE(to_capitals(text, capitals));
    EXPECT_EQ(capitals, expected);
  }
}

}  // namespace
}  // namespace orx::platform
