#include <orx/text/token_parser.h>

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

namespace {

using Texts = std::vector<std::string>;

Texts split(const std::string& text, const char* delimiters) {
  int count = -1;
  char** const tokens = orx_token_parser(text.c_str(), delimiters, &count);
  Texts found(tokens, tokens + count);
  EXPECT_EQ(orx_token_release(tokens, count), 0);
  return found;
}

TEST(TokenParser, EveryDelimiterEndsAToken) {
  using Row = std::tuple<const char*, const char*, Texts>;
  for (const auto& [text, delimiters, tokens] :
       {Row{"12:30:45", ":", {"12", "30", "45"}}, Row{"a::b", ":", {"a", "", "b"}},
        Row{":a:", ":", {"", "a", ""}}, Row{"a;b,c", ";,", {"a", "b", "c"}}, Row{":", ":", {"", ""}},
        Row{"a\xE9z\xFF", "\xE9\xFF", {"a", "z", ""}}, Row{"a b", "", {"a b"}}, Row{"a b", nullptr, {"a b"}}})
    EXPECT_EQ(split(text, delimiters), tokens) << text;
}

TEST(TokenParser, AtMost25Tokens) {
  for (const std::size_t delimiters : {23U, 24U, 25U, 10'000'000U}) {
    Texts expected(std::min<std::size_t>(delimiters + 1, 25));
    if (delimiters < 25) expected.back() = "end";
    EXPECT_EQ(split(std::string(delimiters, ':') + "end", ":"), expected) << delimiters;
  }
  const std::string long_token(10'000'000, 'x');
  EXPECT_EQ(split(long_token + ":", ":"), (Texts{long_token, ""}));
}

TEST(TokenParser, EmptyAndNullTextGiveNoTokens) {
  int count = 7;
  EXPECT_EQ(orx_token_parser("", ":", &count), nullptr);
  EXPECT_EQ(orx_token_parser(nullptr, ":", &count), nullptr);
  EXPECT_EQ(orx_token_parser("a", ":", nullptr), nullptr);
  EXPECT_EQ(count, 7);
  EXPECT_EQ(orx_token_release(nullptr, 3), 0);
}

}  // namespace
