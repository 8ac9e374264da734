#include <orx/text/strings.h>

#include <orx/text/string_array.h>

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>

namespace {

struct Buffer {
  explicit Buffer(const char* text) { std::strcpy(chars, text); }
  char chars[32] = {};
};

TEST(Strings, TrimRemovesOnlyBlanks) {
  const char* const kRows[][3] = {{"   ", "", ""}, {" a b  ", "a b", " a b"}, {"\ta ", "\ta", "\ta"}};
  for (const auto& [text, trimmed, trimmed_at_end] : kRows) {
    EXPECT_STREQ(trim(Buffer(text).chars), trimmed);
    EXPECT_STREQ(trimt(Buffer(text).chars), trimmed_at_end);
  }
}

TEST(Strings, DeleteAndInsertIgnoreIndicesOutside) {
  using Row = std::tuple<const char*, int, const char*, const char*>;
  for (const auto& [text, position, deleted, inserted] :
       {Row{"abc", 0, "bc", "xabc"}, Row{"abc", 3, "abc", "abcx"}, Row{"abc", 4, "abc", "abc"},
        Row{"abc", INT_MIN, "abc", "abc"}, Row{"", -1, "", "x"}}) {
    EXPECT_STREQ(delchar(Buffer(text).chars, position), deleted) << position;
    EXPECT_STREQ(inschar(Buffer(text).chars, 'x', position), inserted) << position;
  }
}

TEST(Strings, BoundedPrintAlwaysTerminates) {
  using Row = std::tuple<std::size_t, const char*, int, const char*>;
  for (const auto& [n, text, result, stored] :
       {Row{4, "abcdef", -1, "abcd"}, Row{4, "abcd", 4, "abcd"}, Row{4, "ab", 2, "ab"},
        Row{SIZE_MAX, "ab", 2, "ab"}, Row{0, "ab", -1, "#####"}}) {
    Buffer buffer("#####");
    EXPECT_EQ(ORX_snprintf(buffer.chars, n, "%s", text), result);
    EXPECT_STREQ(buffer.chars, stored);
    EXPECT_EQ(buffer.chars[4], n == 4 ? '\0' : '#');
  }
}

TEST(Strings, UpperAndBoundedCopyConvertAndFill) {
  Buffer buffer("az{\xE9##");
  upperstr(buffer.chars);
  EXPECT_STREQ(buffer.chars, "AZ{\xE9##");
  ORX_strncpy(buffer.chars, "abcdef", 3);
  EXPECT_EQ(std::string(buffer.chars, 6), std::string("abc\0##", 6));
  EXPECT_STREQ(ORX_strncpy(buffer.chars, nullptr, 3), "");
}

TEST(Strings, RecognisesNumbers) {
  for (const char* text :
       {"12", " -3.5 ", "1.5e-3", "2E+10", "-1.e5", "+", ".", " \t", "5e", "5e-", "1 e5", "- e5", "\v1\f"})
    EXPECT_TRUE(IsNumeric(text)) << text;
  for (const char* text : {"", "1.2.3", "1e2E3", "3-", "1e2.5", "0x1F", "1,5", "e5", "E", " e5", "+-1",
                           "1e 5", "1 2", "\xB2", "1.2.e3"})
    EXPECT_FALSE(IsNumeric(text)) << text;
  EXPECT_FALSE(IsNumeric(CStringA("1\0", 2)));
}

TEST(StringArray, GrowsAndChecksIndices) {
  CAtlStringArray strings;
  EXPECT_EQ(strings.Add("a") + strings.Add("b"), 1U);
  strings.SetSize(SIZE_MAX);  // stays as it is
  strings.SetSize(3);
  EXPECT_EQ(strings.ElementAt(0) + strings.ElementAt(2), "a");
  EXPECT_THROW(strings.ElementAt(strings.GetSize()), CAtlException);
}

}  // namespace
