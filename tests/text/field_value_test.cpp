#include <orx/text/field_value.h>

#include <gtest/gtest.h>
#include <orx/datetime/date_time.h>
#include <tests/support/failing_memory.h>

#include <cerrno>
#include <clocale>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>

namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

struct Outcome {
  double value;
  int special = orxdbOrdinary;
  int result = 0;

  bool operator==(const Outcome&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
  return out << outcome.value << " special " << outcome.special << " result " << outcome.result;
}

// The limits are 3 and 4. The value is at an odd address, and the bytes around it must not change.
template <typename Value>
Outcome read_as(int type, int subtype, const char* text) {
  const Value low = 3, high = 4;
  char bytes[sizeof(Value) + 2];
  std::memset(bytes, '#', sizeof bytes);
  Outcome outcome{0, -9, 0};
  outcome.result =
      orxdb_StrToVal(text, &low, &high, type, subtype, sizeof(Value), &outcome.special, bytes + 1);
  EXPECT_TRUE(bytes[0] == '#' && bytes[sizeof bytes - 1] == '#');
  Value value;
  std::memcpy(&value, bytes + 1, sizeof value);
  outcome.value = static_cast<double>(value);
  return outcome;
}

Outcome read(int type, int subtype, const char* text) {
  if (type == orxdbInteger || type == orxdbYesNo) return read_as<std::int32_t>(type, subtype, text);
  return type == orxdbFloat ? read_as<float>(type, subtype, text) : read_as<double>(type, subtype, text);
}

constexpr Outcome kRefused{0, orxdbOrdinary, -1};

TEST(FieldValue, ReadsTheTextOfEachType) {
  const struct {
    int type;
    const char* text;
    Outcome outcome;
    int subtype = 0;  // orxMonthDayYear
  } rows[] = {
      {orxdbInteger, "  42abc", {42}},
      {orxdbInteger, "\t+7", {7}},
      {orxdbInteger, "+-7", {0}},
      {orxdbInteger, "abc", {0}},
      {orxdbInteger, "99999999999999999999", {2147483647}},
      {orxdbInteger, "-2147483649", {-2147483648.0}},
      {orxdbInteger, "<5", {5, orxdbBelow}},
      {orxdbInteger, "7 < 6 > 5", {6, orxdbBelow}},
      {orxdbInteger, "<", {3, orxdbBelow}},
      {orxdbInteger, " > ", {0, orxdbAbove}},  // not the limit, since a blank follows
      {orxdbDouble, "<>", {0, orxdbBelow}},
      {orxdbFloat, ">", {4, orxdbAbove}},
      {orxdbFloat, "1.5e3", {1500}},
      {orxdbFloat, "0.1", {static_cast<double>(0.1F)}},
      {orxdbFloat, "-1e39", {-kInfinity}},
      {orxdbDouble, "1.25D+2x", {125}},
      {orxdbDouble, "1d", {1}, 11},
      {orxdbDouble, "1e2d3", {100}},
      {orxdbDouble, "0x1F", {0}, -1},
      {orxdbDouble, "inf", {0}},
      {orxdbDouble, "90", {90}, 3},
      {orxdbDouble, "90", {kPi / 2}, 5},
      {orxdbDouble, "45:30:36", {45.51 / 180 * kPi}, 1},
      {orxdbDouble, "0:36", {0.6 / 180 * kPi}, 6},
      {orxdbDouble, "-1:0:36", {-1.01 / 180 * kPi}, 7},
      {orxdbDouble, "1:30:36", {1.5 / 180 * kPi}, 8},
      {orxdbDouble, "2", {2}, 9},
      {orxdbDouble, "200", {kPi}, 10},
      {orxdbDouble, "NS", {0}, 10},  // an angle does not have this token
      {orxdbDouble, "NS", {0, orxdbNS}, 4},
      {orxdbDegrees, "180", {kPi}},
      {orxdbDegreesMinutesDecimalSeconds, "err", {0, orxdbERR}},
      {orxdbNumber, "<5", {0}},
      {orxdbNumber, "-1.5", {-1.5}},
      {orxdbNumber, "-", {0, orxdbNE}},
      {orxdbNumber, "   ", {0, orxdbNE}},
      {orxdbNumber, nullptr, {0, orxdbNE}},
      {orxdbYesNo, "yes ", kRefused},
      {orxdbYesNo, "", kRefused},
      {orxdbDate, "05/03/2024", {45356}, orxDayMonthYear},
      {orxdbDate, "05/03/2024", {45415}},
      {orxdbDate, "05/03/2024", kRefused, orxYearMonthDay},
      {orxdbDate, "05/03/2024 12:00", {45356.5}, orxDayMonthYear},  // keeps its time
      {orxdbDate, "NE", {0, orxdbNE}, orxDayMonthYear},
      {orxdbTime, "12:00", {0.5}},
      {orxdbTime, "24:00", kRefused},
      {orxdbDateTime, "2024/03/05 18:00", {45356.75}, orxYearMonthDay},
      {orxdbDateTime, "2024/03/05", kRefused, 3},
      {orxdbDateTime, "2024/03/05", kRefused, 65538},  // not truncated to a known order
      {orxdbDate, "05/03/2024", kRefused, -65535},
      {orxdbDateTime, "soon 12:00", kRefused, orxYearMonthDay},
      {orxdbNothing, "1", {0}},
      {99, "1", {0}},
      {-1, "1", {0}},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(read(row.type, row.subtype, row.text), row.outcome) << row.type << ' ' << row.text;
  }
  for (const char* word : {"True", "t", "1", "YES", "Y"}) EXPECT_EQ(read(orxdbYesNo, 0, word), Outcome{1});
  for (const char* word : {"False", "F", "0", "no", "n"}) EXPECT_EQ(read(orxdbYesNo, 0, word), Outcome{0});
}

TEST(FieldValue, RecognisesTheTokensOfEachGroup) {
  const std::string late_sign = std::string(127, ' ') + "<";
  constexpr int kNone = orxdbOrdinary;
  const struct {
    const char* text;
    int measurement, value;  // the codes for orxdbInteger and orxdbNumber
  } rows[] = {{" nC ", orxdbNC, orxdbNC},  {"ns", orxdbNS, kNone},    {"IS", orxdbIS, kNone},
              {"Err", orxdbERR, orxdbERR}, {"ERRO", kNone, kNone},    {"a<b", orxdbBelow, kNone},
              {"a>b<", orxdbBelow, kNone}, {"->", orxdbAbove, kNone}, {"ne", orxdbNE, orxdbNE},
              {"-", orxdbNE, orxdbNE},     {"\tNC", kNone, kNone},    {late_sign.c_str(), orxdbNE, orxdbNE}};
  for (const auto& row : rows) {
    for (const auto& [type, code] :
         {std::pair(orxdbInteger, row.measurement), {orxdbNumber, row.value}, {orxdbText, kNone}}) {
      int special = -9;
      const int result = code == kNone && type != orxdbText ? -1 : 0;
      EXPECT_EQ(orxdb_StrToSpecialVal(type, row.text, &special), result) << row.text << " as " << type;
      EXPECT_EQ(special, code) << row.text << " as " << type;
    }
  }
  EXPECT_EQ(orxdb_StrToSpecialVal(orxdbNumber, "NC", nullptr), 0);
}

TEST(FieldValue, CutsOnlyTextAndClearsItsBytes) {
  const struct {
    int type, size;
    const char *text, *stored;  // eight bytes that were '#'
    int result;
  } rows[] = {{orxdbText, 4, "abcdef", "abc\0####", -3},
              {orxdbLongText, 4, "abc", "abc\0####", 0},
              {orxdbText, 6, "NE", "NE\0\0\0\0##", 0},
              {orxdbText, 5, "ab\xE2\x82\xAC", "ab\0\0\0###", -3},  // a cut never splits a character
              {orxdbText, 6, "ab\xE2\x82\xAC", "ab\xE2\x82\xAC\0##", 0},
              {orxdbText, 4, "\xBF\xBF\xBF\xBF", "\xBF\xBF\xBF\0####", -3},  // not valid text
              {orxdbText, 1, "", "\0#######", 0},
              {orxdbText, 1, "a", "\0#######", -3},
              {orxdbText, 0, "", "########", -3},
              {orxdbInteger, 8, "1", "\1\0\0\0\0\0\0\0", 0},
              {orxdbInteger, 2, "-2", "\xFE\xFF\xFF\xFF####", 0},
              {orxdbYesNo, -1, "yes", "\1\0\0\0####", 0},
              {orxdbDouble, 4, ">", "\0\0\0\0\0\0\1@", 0},
              {orxdbDegrees, 3, "NC", "\0\0\0#####", 0},
              {orxdbNothing, 8, "1", "\0\0\0\0\0\0\0\0", 0}};
  const double high = 2.125;
  for (const auto& row : rows) {
    char dst[] = "########";
    EXPECT_EQ(orxdb_StrToVal(row.text, nullptr, &high, row.type, 0, row.size, nullptr, dst), row.result);
    EXPECT_EQ(std::string(dst, 8), std::string(row.stored, 8)) << row.type << ' ' << row.size;
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

TEST(FieldValue, IgnoresTheLocaleAndIsLinearInTheText) {
  ASSERT_TRUE(std::setlocale(LC_ALL, "de_DE.UTF-8") || std::setlocale(LC_ALL, "C.UTF-8"));
  errno = EDOM;
  EXPECT_EQ(read(orxdbDouble, 0, "1.5,5"), (Outcome{1.5, 0, 0}));
  orx::testing::allocations_left = 0;  // without memory for a copy the exponent is ignored
  EXPECT_EQ(read(orxdbDouble, 0, "1.5D2"), (Outcome{1.5, 0, 0}));
  orx::testing::allocations_left = 1'000'000;
  EXPECT_EQ(errno, EDOM);
  std::setlocale(LC_ALL, "C");
  for (int type = 1; type <= 17; ++type) {
    for (const char c : {' ', '9', '<'}) read(type, 1, std::string(10'000'000, c).c_str());
  }
  EXPECT_EQ(read(orxdbDouble, 0, (std::string(10'000'000, '0') + "1D1").c_str()), (Outcome{10, 0, 0}));
  EXPECT_EQ(read(orxdbNumber, 0, (std::string(127, ' ') + "1").c_str()), (Outcome{0, 6, 0}));
  EXPECT_EQ(read(orxdbNumber, 0, ("1e-" + std::string(400, '9')).c_str()), (Outcome{0, 0, 0}));
}

}  // namespace
