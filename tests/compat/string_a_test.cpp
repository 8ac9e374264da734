#include <orx/compat/string_a.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <clocale>
#include <cstdlib>
#include <cwchar>
#include <functional>
#include <thread>
#include <tuple>
#include <vector>

namespace {

using Change = std::function<void(CStringA&)>;

HRESULT result_of(const Change& change, CStringA text) try {
  change(text);
  return S_OK;
} catch (const CAtlException& failure) {
  EXPECT_EQ(text, "abc") << "unchanged after an error";
  return failure;
}

const std::tuple<const char*, Change, const char*> kChanges[] = {
    {"abc", [](CStringA& s) { s.SetAt(2, 'x'); }, "abx"},
    {"abc", [](CStringA& s) { EXPECT_EQ(s.Insert(-5, "xy"), 5); }, "xyabc"},
    {"abc", [](CStringA& s) { EXPECT_EQ(s.Insert(9, 'x'), 4); }, "abcx"},
    {"abcd", [](CStringA& s) { EXPECT_EQ(s.Delete(2, INT_MAX), 2); }, "ab"},
    {"abcd", [](CStringA& s) { EXPECT_EQ(s.Delete(-1, -1), 4); }, "abcd"},
    {"a-b--", [](CStringA& s) { EXPECT_EQ(s.Replace("-", "+-"), 3); }, "a+-b+-+-"},
    {"aaaaa", [](CStringA& s) { EXPECT_EQ(s.Replace("aa", nullptr), 2); }, "a"},
    {"abab", [](CStringA& s) { EXPECT_EQ(s.Replace('b', 'c') + s.Remove('a'), 4); }, "cc"},
    {"\t a\v b \r\n", [](CStringA& s) { s.Trim(); }, "a\v b"},
    {" \f ", [](CStringA& s) { s.Trim(); }, ""},
    {"+-a-+", [](CStringA& s) { s.Trim('+').Trim("+-").Trim(nullptr); }, "a"},
    {"az\xE9{", [](CStringA& s) { s.MakeUpper(); }, "AZ\xE9{"},
    {"AZ\xC9[", [](CStringA& s) { s.MakeLower(); }, "az\xC9["},
    {"abc", [](CStringA& s) { s.GetBuffer(50)[1] = '\0', s.ReleaseBuffer(); }, "a"},
    {"abc", [](CStringA& s) { s.ReleaseBuffer(2); }, "ab"},  // without GetBuffer
    // Arguments that are part of the string.
    {"abc", [](CStringA& s) { s = s.GetString() + 1; }, "bc"},
    {"abc", [](CStringA& s) { s.Append(s), s += s; }, "abcabcabcabc"},
    {"abc", [](CStringA& s) { s.Insert(1, s); }, "aabcbc"},
    {"abc", [](CStringA& s) { s.Replace(s, s.GetString() + 2); }, "c"},
    {"abc", [](CStringA& s) { s.Format("%s!%s", s.GetString(), s.GetString()); }, "abc!abc"},
    {"abc", [](CStringA& s) { s.AppendFormat("-%s", s.GetString()); }, "abc-abc"},
    {"abba", [](CStringA& s) { s.Trim(s.GetString() + 3); }, "bb"},
};

TEST(StringA, ChangesLeaveCopiesAlone) {
  for (const auto& [before, change, after] : kChanges) {
    for (const int capacity : {0, 100}) {  // reallocates, changes in place
      CStringA text(before);
      text.GetBuffer(capacity);
      change(text);
      EXPECT_EQ(text, after);
    }
    const CStringA original(before);
    CStringA copy(original);
    change(copy);
    EXPECT_EQ(original + '|' + copy, CStringA(before) + '|' + after);
  }
}

TEST(StringA, RaisesErrorsAndKeepsItsText) {
  const std::vector<Change> refused({
      [](CStringA& s) { s.GetAt(4); }, [](CStringA& s) { s.SetAt(3, 'x'); },  // the NUL
      [](CStringA& s) { s.SetString(nullptr, 1); }, [](CStringA& s) { s.Append("x", -1); },
      [](CStringA& s) { s = CStringA('x', -1); }, [](CStringA& s) { s.ReleaseBuffer(5000); },
      [](CStringA& s) { s.AppendFormat("x%lc", static_cast<std::wint_t>(-2)); },  // no such character
  });
  for (const Change& change : refused)
    EXPECT_EQ(result_of(change, "abc"), E_INVALIDARG) << &change - refused.data();
  EXPECT_EQ(result_of([](CStringA& s) { s.Append("x", INT_MAX); }, "abc"), E_OUTOFMEMORY);
}

TEST(StringA, ConstructsAndConcatenates) {
  EXPECT_EQ(CStringA(nullptr, 0) + CStringA(static_cast<const char*>(nullptr)), "");
  EXPECT_EQ(CStringA("a\0b", 3).Mid(1), CStringA("\0b", 2));
  EXPECT_EQ('<' + CStringA("a") + "b" + CStringA('c', 2) + '>', "<abcc>");
  CStringA formatted, grown;
  formatted.Format("%*s|", 3000, "x");
  for (int i = 0; i < 2999; ++i) grown.AppendChar(' ');
  EXPECT_EQ(grown + "x|", formatted);
}

TEST(StringA, FindsAndCopiesParts) {
  const CStringA text("abcabc");
  const std::vector<int> kFound{text.Find('b'),        text.Find('b', 2),     text.Find('b', -1),
                                text.Find("ca"),       text.Find("", 6),      text.Find("", 7),
                                text.ReverseFind('b'), text.FindOneOf("xcb"), text.FindOneOf(nullptr)};
  EXPECT_EQ(kFound, (std::vector<int>{1, 4, -1, 2, 6, -1, 4, 1, -1}));
  EXPECT_EQ(text.Left(2) + '|' + text.Left(-1) + '|' + text.Left(99), "ab||abcabc");
  EXPECT_EQ(text.Right(2) + '|' + text.Right(-1) + '|' + text.Right(99), "bc||abcabc");
  EXPECT_EQ(text.Mid(4, INT_MAX) + '|' + text.Mid(99) + '|' + text.Mid(-2, 1) + '|' + text.Mid(1, -1),
            "bc||a|");
}

TEST(StringA, TokenizeSkipsEmptyTokens) {
  const char* const kRows[][3] = {
      {",a,,bc,", ",", "a|bc|"}, {"a b;c", " ;", "a|b|c|"}, {"", ",", ""},
      {",,", ",", ""},           {"a,b", "", "a,b|"},       {"a,b", nullptr, "a,b|"}};
  for (const auto& [text, set, expected] : kRows) {
    CStringA tokens;
    int start = 0;
    for (CStringA token; token = CStringA(text).Tokenize(set, start), start != -1;) tokens += token + '|';
    EXPECT_EQ(tokens, expected);
    EXPECT_THROW(CStringA(text).Tokenize(set, start), CAtlException) << "after the end";
  }
}

TEST(StringA, ComparesUnsignedBytes) {
  EXPECT_TRUE(CStringA("B") < "a" && CStringA("\x80") > CStringA("\x7F") && CStringA() == nullptr);
  EXPECT_EQ(CStringA("aBc").CompareNoCase("AbC"), 0);
  EXPECT_LT(CStringA("_").CompareNoCase("A"), 0) << "letters are compared in lower case";
  EXPECT_GT(CStringA("\xE9").CompareNoCase("\xC9"), 0);
}

TEST(StringA, FormatKeepsLocaleAndErrno) {
  // With a decimal comma, where it is installed.
  ASSERT_TRUE(std::setlocale(LC_ALL, "de_DE.UTF-8") || std::setlocale(LC_ALL, "C.UTF-8"));
  errno = 77;
  CStringA text;
  text.Format("%.1f", 0.5);
  EXPECT_EQ(text, "0.5");
  EXPECT_GT(MB_CUR_MAX, 1U);
  std::setlocale(LC_ALL, "C");
  text.Format("%ls", L"\x20AC");
  EXPECT_EQ(text, "\xE2\x82\xAC");
  EXPECT_EQ(errno, 77);
  EXPECT_EQ(MB_CUR_MAX, 1U);
}

TEST(StringA, ThreadsMayUseCopiesOfOneText) {
  const auto work = [mine = CStringA("shared")] {
    for (int i = 0; i < 5000; ++i) {
      CStringA copy(mine);
      const CStringA again(copy);
      ASSERT_EQ(again + copy.MakeUpper(), "sharedSHARED");
    }
  };
  const std::jthread first(work);
  const std::jthread second(work);
}

}  // namespace
