#include <orx/text/field_value.h>

#include <gtest/gtest.h>
#include <orx/datetime/date_time.h>
#include <tests/support/failing_memory.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <tuple>
#include <vector>

namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

using Outcome = std::tuple<double, int, int>;  // the value, its special code, the result

// The limits are 3 and 4. The value is at an odd address, and the bytes around it must not change.
template <typename Value>
Outcome read_as(int type, int subtype, const char* text) {
  const Value low = 3, high = 4;
  char bytes[sizeof(Value) + 2];
  std::memset(bytes, '#', sizeof bytes);
  int special = -9;
  const int result = orxdb_StrToVal(text, &low, &high, type, subtype, sizeof(Value), &special, bytes + 1);
  EXPECT_TRUE(bytes[0] == '#' && bytes[sizeof bytes - 1] == '#');
  Value value;
  std::memcpy(&value, bytes + 1, sizeof value);
  return {static_cast<double>(value), special, result};
}

Outcome read(int type, int subtype, const char* text) {
  if (type == orxdbInteger || type == orxdbYesNo) return read_as<std::int32_t>(type, subtype, text);
  return type == orxdbFloat ? read_as<float>(type, subtype, text) : read_as<double>(type, subtype, text);
}

struct Row {
  int subtype;
  const char* text;
  double value;
  int special = orxdbOrdinary, result = 0;
};

Row refused(int subtype, const char* text) { return {subtype, text, 0, orxdbOrdinary, -1}; }

TEST(FieldValue, ReadsTheTextOfEachType) {
  const std::pair<int, std::vector<Row>> types[] = {
      {orxdbInteger,
       {Row{0, "  42abc", 42}, Row{0, "\t+7", 7}, Row{0, "+-7", 0}, Row{0, "abc", 0},
        Row{0, "<5", 5, orxdbBelow}, Row{0, "<", 3, orxdbBelow}, Row{0, "7 < 6 > 5", 6, orxdbBelow},
        Row{0, " > ", 0, orxdbAbove}, Row{0, "99999999999999999999", 2147483647},
        Row{0, "-2147483649", -2147483648.0}}},
      {orxdbFloat,
       {Row{0, ">", 4, orxdbAbove}, Row{0, "1.5e3", 1500}, Row{0, "0.1", 0.1F}, Row{0, "-1e39", -kInfinity}}},
      {orxdbDouble,
       {Row{0, "<>", 0, orxdbBelow}, Row{0, "1.25D+2x", 125}, Row{0, "1e2d3", 100}, Row{0, "inf", 0},
        Row{-1, "0x1F", 0}, Row{1, "45:30:36", 45.51 / 180 * kPi}, Row{3, "90", 90}, Row{4, "NS", 0, orxdbNS},
        Row{5, "90", kPi / 2}, Row{6, "0:36", 0.6 / 180 * kPi}, Row{7, "-1:0:36", -1.01 / 180 * kPi},
        Row{8, "1:30:36", 1.5 / 180 * kPi}, Row{9, "2", 2}, Row{10, "200", kPi}, Row{10, "NS", 0},
        Row{11, "1d", 1}}},
      {orxdbDegrees, {Row{0, "180", kPi}}},
      {orxdbDegreesMinutesDecimalSeconds, {Row{0, "err", 0, orxdbERR}}},
      {orxdbNumber,
       {Row{0, "<5", 0}, Row{0, "-1.5", -1.5}, Row{0, "-", 0, orxdbNE}, Row{0, "   ", 0, orxdbNE},
        Row{0, nullptr, 0, orxdbNE}}},
      {orxdbYesNo,
       {refused(0, "yes "), refused(0, ""), Row{0, "True", 1}, Row{0, "t", 1}, Row{0, "1", 1},
        Row{0, "YES", 1}, Row{0, "Y", 1}, Row{0, "False", 0}, Row{0, "F", 0}, Row{0, "0", 0}, Row{0, "no", 0},
        Row{0, "n", 0}}},
      // An unknown order must not be truncated to a known one.
      {orxdbDate,
       {Row{orxDayMonthYear, "05/03/2024", 45356}, Row{orxDayMonthYear, "05/03/2024 12:00", 45356.5},
        Row{orxDayMonthYear, "NE", 0, orxdbNE}, Row{orxMonthDayYear, "05/03/2024", 45415},
        refused(orxYearMonthDay, "05/03/2024"), refused(-65535, "05/03/2024")}},
      {orxdbTime, {Row{0, "12:00", 0.5}, refused(0, "24:00")}},
      {orxdbDateTime,
       {Row{orxYearMonthDay, "2024/03/05 18:00", 45356.75}, refused(orxYearMonthDay, "soon 12:00"),
        refused(3, "2024/03/05"), refused(65538, "2024/03/05")}},
      {orxdbNothing, {Row{0, "1", 0}}},
      {99, {Row{0, "1", 0}}},
      {-1, {Row{0, "1", 0}}}};
  for (const auto& [type, rows] : types) {
    for (const auto& [subtype, text, value, special, result] : rows) {
      EXPECT_EQ(read(type, subtype, text), (Outcome{value, special, result}))
          << type << ' ' << (text ? text : "null");
    }
  }
}

TEST(FieldValue, RecognisesTheTokensOfEachGroup) {
  const std::string late_sign = std::string(127, ' ') + "<";
  constexpr int kNone = orxdbOrdinary;
  // The codes for orxdbInteger and orxdbNumber.
  const std::tuple<const char*, int, int> rows[] = {
      {" nC ", orxdbNC, orxdbNC},  {"ns", orxdbNS, kNone},    {"IS", orxdbIS, kNone},
      {"Err", orxdbERR, orxdbERR}, {"ERRO", kNone, kNone},    {"a<b", orxdbBelow, kNone},
      {"a>b<", orxdbBelow, kNone}, {"->", orxdbAbove, kNone}, {"ne", orxdbNE, orxdbNE},
      {"-", orxdbNE, orxdbNE},     {"\tNC", kNone, kNone},    {late_sign.c_str(), orxdbNE, orxdbNE}};
  for (const auto& [text, measurement, value] : rows) {
    for (const auto& [type, code] :
         {std::pair(orxdbInteger, measurement), {orxdbNumber, value}, {orxdbText, kNone}}) {
      int special = -9;
      const int result = code == kNone && type != orxdbText ? -1 : 0;
      EXPECT_EQ(orxdb_StrToSpecialVal(type, text, &special), result) << text << " as " << type;
      EXPECT_EQ(special, code) << text << " as " << type;
    }
  }
  EXPECT_EQ(orxdb_StrToSpecialVal(orxdbNumber, "NC", nullptr), 0);
}

TEST(FieldValue, CutsOnlyTextAndClearsItsBytes) {
  // The bytes were '#' before.
  using Case = std::tuple<int, int, const char*, const char*, int>;
  const double high = 2.125;
  for (const auto& [type, size, text, stored, result] :
       {Case{orxdbText, 4, "abcdef", "abc\0####", -3}, Case{orxdbLongText, 4, "abc", "abc\0####", 0},
        Case{orxdbText, 6, "NE", "NE\0\0\0\0##", 0},
        Case{orxdbText, 5, "ab\xE2\x82\xAC", "ab\0\0\0###", -3},  // a cut never splits a character
        Case{orxdbText, 6, "ab\xE2\x82\xAC", "ab\xE2\x82\xAC\0##", 0},
        Case{orxdbText, 4, "\xBF\xBF\xBF\xBF", "\xBF\xBF\xBF\0####", -3},  // not valid text
        Case{orxdbText, 1, "", "\0#######", 0}, Case{orxdbText, 1, "a", "\0#######", -3},
        Case{orxdbText, 0, "", "########", -3}, Case{orxdbInteger, 8, "1", "\1\0\0\0\0\0\0\0", 0},
        Case{orxdbInteger, 2, "-2", "\xFE\xFF\xFF\xFF####", 0},
        Case{orxdbYesNo, -1, "yes", "\1\0\0\0####", 0}, Case{orxdbDouble, 4, ">", "\0\0\0\0\0\0\1@", 0},
        Case{orxdbDegrees, 3, "NC", "\0\0\0#####", 0}, Case{orxdbNothing, 8, "1", "\0\0\0\0\0\0\0\0", 0}}) {
    char dst[] = "########";
    EXPECT_EQ(orxdb_StrToVal(text, nullptr, &high, type, 0, size, nullptr, dst), result);
    EXPECT_EQ(std::string(dst, 8), std::string(stored, 8)) << type << ' ' << size;
  }
  int special = -9;
  EXPECT_EQ(orxdb_StrToVal("NC", nullptr, nullptr, orxdbDouble, 0, 8, &special, nullptr) + special, orxdbNC);
  double value = 1;
  EXPECT_EQ(orxdb_StrToVal(">", nullptr, nullptr, orxdbDouble, 0, 8, nullptr, &value), 0);
  EXPECT_EQ(value, 0);
}

TEST(FieldValue, DatesSetTheOrderOfTheDatabaseEvenIfRefused) {
  int order = -9;
  EXPECT_EQ(orxdb_SetDateFormat(7) + orxdb_GetDateFormat(&order) + orxdb_GetDateFormat(nullptr), 0);
  EXPECT_EQ(order, 7);
  read(orxdbDate, 0, "NC");
  orxdb_GetDateFormat(&order);
  EXPECT_EQ(order, 7);
  read(orxdbTime, 2, "no time");
  orxdb_GetDateFormat(&order);
  EXPECT_EQ(order, 2);
  orxdb_SetDateFormat(1);
}

TEST(FieldValue, KeepsErrnoAndIsLinearInTheText) {
  errno = EDOM;
  EXPECT_EQ(read(orxdbDouble, 0, "1.5,5"), (Outcome{1.5, 0, 0}));
  EXPECT_EQ(errno, EDOM);
  // Without memory for a copy the exponent is ignored.
  const auto read_exponent = [] { return read(orxdbDouble, 0, "1.5D2"); };
  EXPECT_EQ(orx::testing::without_memory(read_exponent), (Outcome{1.5, 0, 0}));
  for (int type = 1; type <= 17; ++type)
    for (const char c : {' ', '9', '<'}) read(type, 1, std::string(10'000'000, c).c_str());
  EXPECT_EQ(read(orxdbDouble, 0, (std::string(10'000'000, '0') + "1D1").c_str()), (Outcome{10, 0, 0}));
  EXPECT_EQ(read(orxdbNumber, 0, (std::string(127, ' ') + "1").c_str()), (Outcome{0, 6, 0}));
  EXPECT_EQ(read(orxdbNumber, 0, ("1e-" + std::string(400, '9')).c_str()), (Outcome{0, 0, 0}));
}

}  // namespace
