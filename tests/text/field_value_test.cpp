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
#include <vector>

namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

struct Outcome {
  double value;
  int special, result;

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

struct Row {
  const char* text;
  double value;
  int special = orxdbOrdinary;
  int result = 0;
};

Row refused(const char* text) { return {text, 0, orxdbOrdinary, -1}; }

TEST(FieldValue, ReadsTheTextOfEachType) {
  const double tenth = 0.1F;
  const struct {
    int type, subtype;
    std::vector<Row> rows;
  } types[] = {
      {orxdbInteger,
       0,
       {Row{"  42abc", 42}, Row{"\t+7", 7}, Row{"+-7", 0}, Row{"abc", 0}, Row{"<5", 5, orxdbBelow},
        Row{"<", 3, orxdbBelow}, Row{"7 < 6 > 5", 6, orxdbBelow}, Row{" > ", 0, orxdbAbove},
        Row{"99999999999999999999", 2147483647}, Row{"-2147483649", -2147483648.0}}},
      {orxdbFloat,
       0,
       {Row{">", 4, orxdbAbove}, Row{"1.5e3", 1500}, Row{"0.1", tenth}, Row{"-1e39", -kInfinity}}},
      {orxdbDouble, 0, {Row{"<>", 0, orxdbBelow}, Row{"1.25D+2x", 125}, Row{"1e2d3", 100}, Row{"inf", 0}}},
      {orxdbDouble, -1, {Row{"0x1F", 0}}},
      {orxdbDouble, 1, {Row{"45:30:36", 45.51 / 180 * kPi}}},
      {orxdbDouble, 3, {Row{"90", 90}}},
      {orxdbDouble, 4, {Row{"NS", 0, orxdbNS}}},
      {orxdbDouble, 5, {Row{"90", kPi / 2}}},
      {orxdbDouble, 6, {Row{"0:36", 0.6 / 180 * kPi}}},
      {orxdbDouble, 7, {Row{"-1:0:36", -1.01 / 180 * kPi}}},
      {orxdbDouble, 8, {Row{"1:30:36", 1.5 / 180 * kPi}}},
      {orxdbDouble, 9, {Row{"2", 2}}},
      {orxdbDouble, 10, {Row{"200", kPi}, Row{"NS", 0}}},
      {orxdbDouble, 11, {Row{"1d", 1}}},
      {orxdbDegrees, 0, {Row{"180", kPi}}},
      {orxdbDegreesMinutesDecimalSeconds, 0, {Row{"err", 0, orxdbERR}}},
      {orxdbNumber,
       0,
       {Row{"<5", 0}, Row{"-1.5", -1.5}, Row{"-", 0, orxdbNE}, Row{"   ", 0, orxdbNE},
        Row{nullptr, 0, orxdbNE}}},
      {orxdbYesNo,
       0,
       {refused("yes "), refused(""), Row{"True", 1}, Row{"t", 1}, Row{"1", 1}, Row{"YES", 1}, Row{"Y", 1},
        Row{"False", 0}, Row{"F", 0}, Row{"0", 0}, Row{"no", 0}, Row{"n", 0}}},
      {orxdbDate,
       orxDayMonthYear,
       {Row{"05/03/2024", 45356}, Row{"05/03/2024 12:00", 45356.5}, Row{"NE", 0, orxdbNE}}},
      {orxdbDate, orxMonthDayYear, {Row{"05/03/2024", 45415}}},
      {orxdbDate, orxYearMonthDay, {refused("05/03/2024")}},
      {orxdbDate, -65535, {refused("05/03/2024")}},  // unknown orders must not be truncated to known ones
      {orxdbTime, 0, {Row{"12:00", 0.5}, refused("24:00")}},
      {orxdbDateTime, orxYearMonthDay, {Row{"2024/03/05 18:00", 45356.75}, refused("soon 12:00")}},
      {orxdbDateTime, 3, {refused("2024/03/05")}},
      {orxdbDateTime, 65538, {refused("2024/03/05")}},
      {orxdbNothing, 0, {Row{"1", 0}}},
      {99, 0, {Row{"1", 0}}},
      {-1, 0, {Row{"1", 0}}}};
  for (const auto& [type, subtype, rows] : types) {
    for (const auto& [text, value, special, result] : rows) {
      EXPECT_EQ(read(type, subtype, text), (Outcome{value, special, result}))
          << type << ' ' << (text ? text : "null");
    }
  }
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
  EXPECT_EQ(errno, EDOM);
  // Without memory for a copy the exponent is ignored.
  const auto read_exponent = [] { return read(orxdbDouble, 0, "1.5D2"); };
  EXPECT_EQ(orx::testing::without_memory(read_exponent), (Outcome{1.5, 0, 0}));
  std::setlocale(LC_ALL, "C");
  for (int type = 1; type <= 17; ++type) {
    for (const char c : {' ', '9', '<'}) read(type, 1, std::string(10'000'000, c).c_str());
  }
  EXPECT_EQ(read(orxdbDouble, 0, (std::string(10'000'000, '0') + "1D1").c_str()), (Outcome{10, 0, 0}));
  EXPECT_EQ(read(orxdbNumber, 0, (std::string(127, ' ') + "1").c_str()), (Outcome{0, 6, 0}));
  EXPECT_EQ(read(orxdbNumber, 0, ("1e-" + std::string(400, '9')).c_str()), (Outcome{0, 0, 0}));
}

}  // namespace
