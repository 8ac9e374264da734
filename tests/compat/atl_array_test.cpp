#include <orx/compat/atl_array.h>

#include <orx/compat/string_a.h>

#include <gtest/gtest.h>

#include <string>

namespace {

using Strings = CAtlArray<CStringA>;

std::string joined(const Strings& strings) {
  std::string all;
  for (const CStringA& text : strings) all.append(text.GetString()).append(",");
  return all;
}

TEST(AtlArray, ChangesInPlace) {
  Strings strings;
  for (const char* text : {"a", "b", "c"}) strings.Add(text);
  EXPECT_EQ(strings.Add(strings[0]), 3U);  // an element of the block that is reallocated
  strings.RemoveAt(1, 2);
  EXPECT_EQ(joined(strings), "a,a,");
  strings.InsertAt(1, "x");
  strings.InsertAt(5, strings[1]);  // beyond the end
  EXPECT_EQ(joined(strings), "a,x,a,,,x,");
  EXPECT_TRUE(strings.SetCount(2));
  EXPECT_EQ(strings.Append(strings), 2U);
  Strings other;
  other.Copy(strings);
  strings.RemoveAll();
  EXPECT_EQ(joined(strings) + joined(other), "a,x,a,x,");
  CAtlArray<std::string> texts;  // moving a text onto itself would empty it
  texts.Add("a");
  texts.RemoveAt(0, 0);
  EXPECT_EQ(texts[0], "a");
}

TEST(AtlArray, RaisesErrorsForIndicesAndSizes) {
  Strings strings;
  strings.Add("a");
  EXPECT_THROW(strings[1], CAtlException);
  EXPECT_THROW(strings.RemoveAt(1, SIZE_MAX), CAtlException);
  EXPECT_THROW(strings.InsertAt(SIZE_MAX, "x"), CAtlException);
  EXPECT_FALSE(strings.SetCount(SIZE_MAX) || strings.SetCount(SIZE_MAX / sizeof(CStringA)));
  EXPECT_EQ(joined(strings), "a,");
}

}  // namespace
