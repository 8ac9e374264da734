#include <orx/platform/variant_text.h>

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <numbers>
#include <tuple>
#include <vector>

namespace orx::platform {
namespace {

VARIANT variant(int type, std::int64_t bits) {
  VARIANT value{};
  value.vt = static_cast<VARTYPE>(type);
  value.llVal = bits;
  return value;
}

VARIANT real(int type, double number) {
  VARIANT value = variant(type, std::bit_cast<std::int64_t>(number));
  if (type == VT_R4) value.fltVal = static_cast<float>(number);
  return value;
}

std::string text_of(const VARIANT& value) {
  std::string text = "old";
  EXPECT_EQ(variant_text(value, text), S_OK) << value.vt;
  return text;
}

TEST(VariantText, RealsAndDatesAreTextsOfTheirType) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const std::tuple<int, std::vector<double>, const char*> kRows[] = {
      {VT_R4, {0.1, 16777216, std::numbers::pi}, "0.1, 1.677722E+07, 3.141593, "},
      {VT_R8, {1.0 / 3, 0.1 + 0.2, -0.0, 100, 1e15}, "0.333333333333333, 0.3, 0, 100, 1E+15, "},
      {VT_R8, {1e-5, 0.0001, 5e-324}, "1E-05, 0.0001, 4.94065645841247E-324, "},
      {VT_R8, {kInfinity, -kInfinity, -std::nan("")}, "INF, -INF, NAN, "},
      {VT_DATE, {45000.5, 45000, 0.25}, "3/15/2023 12:00:00 PM, 3/15/2023, 6:00:00 AM, "},
      {VT_DATE, {0, 0.9999942}, "12:00:00 AM, 11:59:59 PM, "},
      {VT_DATE, {-657434.75, 2958465.999988}, "1/1/0100 6:00:00 PM, 12/31/9999 11:59:59 PM, "},
      // The fraction of a date before the first day counts forward, and rounding goes to the next day.
      {VT_DATE, {-1.25, -1.9999943}, "12/29/1899 6:00:00 AM, 12:00:00 AM, "}};
  for (const auto& [type, numbers, expected] : kRows) {
    std::string all;
    for (const double number : numbers) all += text_of(real(type, number)) + ", ";
    EXPECT_EQ(all, expected);
  }
}

TEST(VariantText, IntegersAreDecimal) {
  const std::pair<int, const char*> kRows[] = {
      // all bits but the lowest are set
      {VT_I1, "-2"},     {VT_I2, "-2"},   {VT_I4, "-2"},           {VT_I8, "-2"},
      {VT_INT, "-2"},    {VT_UI1, "254"}, {VT_UI2, "65534"},       {VT_UI4, "4294967294"},
      {VT_BOOL, "-2"},   {VT_EMPTY, ""},  {VT_UINT, "4294967294"}, {VT_UI8, "18446744073709551614"},
      {VT_CY, "-0.0002"}};
  for (const auto& [type, text] : kRows) EXPECT_EQ(text_of(variant(type, -2)), text) << type;
  EXPECT_EQ(text_of(variant(VT_CY, 100000)), "10");
}

TEST(VariantText, WideTextBecomesUtf8) {
  wchar_t characters[] = L"\x20AC\0b";
  VARIANT value = variant(VT_BSTR, 0);
  EXPECT_EQ(text_of(value), "");  // a null text
  value.bstrVal = characters;
  EXPECT_EQ(text_of(value), "\xE2\x82\xAC");
}

TEST(VariantText, UnsupportedTypesAndDatesAreRefused) {
  std::string text("kept");
  for (const int type : {+VT_NULL, +VT_ERROR, +VT_DISPATCH, VT_ARRAY | VT_I4, VT_BYREF | VT_I4})
    EXPECT_EQ(variant_text(variant(type, 0), text), DISP_E_TYPEMISMATCH) << type;
  EXPECT_EQ(variant_text(variant(99, 0), text), DISP_E_BADVARTYPE);
  // The last date would round to the year 10000.
  for (const double days : {-657435.0, 2958466.0, std::nan(""), 2958465.999999})
    EXPECT_EQ(variant_text(real(VT_DATE, days), text), E_INVALIDARG) << days;
  EXPECT_EQ(text, "kept");
}

}  // namespace
}  // namespace orx::platform
