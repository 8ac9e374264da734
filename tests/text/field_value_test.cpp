#include <orx/text/field_value.h>

#include <gtest/gtest.h>
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
  int special, result;

  bool operator==(const Outcome&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
  return out << outcome.value << " special " << outcome.special << " result " << outcome.result;
}

// The limits are 3 and 4. The value stands at an odd address, and nothing is written beyond it.
template <typename Value>
Outcome read_as(int type, int subtype, const char* text) {
  const Value low = 3, high = 4;
  char room[sizeof(Value) + 2];
  std::memset(room, '#', sizeof room);
  Outcome outcome{0, -9, 0};
  outcome.result =
      orxdb_StrToVal(text, &low, &high, type, subtype, sizeof(Value), &outcome.special, room + 1);
  EXPECT_TRUE(room[0] == '#' && room[sizeof room - 1] == '#');
  Value value;
  std::memcpy(&value, room + 1, sizeof value);
  outcome.value = static_cast<double>(value);
  return outcome;
}

Outcome read(int type, int subtype, const char* text) {
  if (type == orxdbInteger || type == orxdbYesNo) return read_as<std::int32_t>(type, subtype, text);
  return type == orxdbFloat ? read_as<float>(type, subtype, text) : read_as<double>(type, subtype, text);
}

TEST(FieldValue, Reads) {
  const struct {
    int type, subtype;
    const char* text;
    Outcome outcome;
  } rows[] = {
      {1, 0, "  42abc", {42, 0, 0}},
      {1, 0, "\t+7", {7, 0, 0}},
      {1, 0, "+-7", {0, 0, 0}},
      {1, 0, "abc", {0, 0, 0}},
      {1, 0, "99999999999999999999", {2147483647, 0, 0}},
      {1, 0, "-2147483649", {-2147483648.0, 0, 0}},
      {1, 0, "<5", {5, 1, 0}},
      {1, 0, "7 < 6 > 5", {6, 1, 0}},
      {1, 0, "<", {3, 1, 0}},
      {1, 0, " > ", {0, 2, 0}},  // a blank follows
      {9, 0, "<>", {0, 1, 0}},
      {2, 0, ">", {4, 2, 0}},
      {2, 0, "1.5e3", {1500, 0, 0}},
      {2, 0, "0.1", {static_cast<double>(0.1F), 0, 0}},
      {2, 0, "-1e39", {-kInfinity, 0, 0}},
      {9, 0, "1.25D+2x", {125, 0, 0}},
      {9, 11, "1d", {1, 0, 0}},
      {9, 0, "1e2d3", {100, 0, 0}},
      {9, -1, "0x1F", {0, 0, 0}},
      {9, 0, "inf", {0, 0, 0}},
      {9, 3, "90", {90, 0, 0}},
      {9, 5, "90", {kPi / 2, 0, 0}},
      {9, 1, "45:30:36", {45.51 / 180 * kPi, 0, 0}},
      {9, 6, "0:36", {0.6 / 180 * kPi, 0, 0}},
      {9, 7, "-1:0:36", {-1.01 / 180 * kPi, 0, 0}},
      {9, 8, "1:30:36", {1.5 / 180 * kPi, 0, 0}},
      {9, 9, "2", {2, 0, 0}},
      {9, 10, "200", {kPi, 0, 0}},
      {9, 10, "NS", {0, 0, 0}},  // an angle has fewer tokens
      {9, 4, "NS", {0, 4, 0}},
      {10, 0, "180", {kPi, 0, 0}},
      {16, 0, "err", {0, 7, 0}},
      {17, 0, "<5", {0, 0, 0}},
      {17, 0, "-1.5", {-1.5, 0, 0}},
      {17, 0, "-", {0, 6, 0}},
      {17, 0, "   ", {0, 6, 0}},
      {17, 0, nullptr, {0, 6, 0}},
      {4, 0, "yes", {1, 0, 0}},
      {4, 0, "TRUE", {1, 0, 0}},
      {4, 0, "n", {0, 0, 0}},
      {4, 0, "0", {0, 0, 0}},
      {4, 0, "yes ", {0, 0, -1}},
      {4, 0, "", {0, 0, -1}},
      {6, 1, "05/03/2024", {45356, 0, 0}},
      {6, 0, "05/03/2024", {45415, 0, 0}},
      {6, 2, "05/03/2024", {0, 0, -1}},
      {6, 1, "05/03/2024 12:00", {45356.5, 0, 0}},  // the midnight that a date gets comes too late
      {6, 1, "NE", {0, 6, 0}},
      {7, 0, "12:00", {0.5, 0, 0}},
      {7, 0, "24:00", {0, 0, -1}},
      {8, 2, "2024/03/05 18:00", {45356.75, 0, 0}},
      {8, 3, "2024/03/05", {0, 0, -1}},
      {8, 65538, "2024/03/05", {0, 0, -1}},  // no order either
      {6, -65535, "05/03/2024", {0, 0, -1}},
      {8, 2, "soon 12:00", {0, 0, -1}},
      {5, 0, "1", {0, 0, 0}},
      {99, 0, "1", {0, 0, 0}},
      {-1, 0, "1", {0, 0, 0}},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(read(row.type, row.subtype, row.text), row.outcome) << row.type << ' ' << row.text;
  }
}

TEST(FieldValue, KnowsTokens) {
  const std::string late_sign = std::string(127, ' ') + "<";
  const struct {
    const char* text;
    int measurement, value, text_code;  // as in orxdbInteger, orxdbNumber and orxdbText; -1: ordinary
  } rows[] = {{" nC ", 3, 3, 0},   {"ns", 4, -1, 0},  {"IS", 5, -1, 0},    {"Err", 7, 7, 0},
              {"ERRO", -1, -1, 0}, {"a<b", 1, -1, 0}, {"a>b<", 1, -1, 0},  {"->", 2, -1, 0},
              {"ne", 6, 6, 0},     {"-", 6, 6, 0},    {"\tNC", -1, -1, 0}, {late_sign.c_str(), 6, 6, 0}};
  for (const auto& row : rows) {
    const std::pair<int, int> expected[] = {
        {orxdbInteger, row.measurement}, {orxdbNumber, row.value}, {orxdbText, row.text_code}};
    for (const auto& [type, code] : expected) {
      int special = -9;
      EXPECT_EQ(orxdb_StrToSpecialVal(type, row.text, &special), code < 0 ? -1 : 0) << row.text;
      EXPECT_EQ(special, std::max(code, 0)) << row.text << " as " << type;
    }
  }
  EXPECT_EQ(orxdb_StrToSpecialVal(orxdbNumber, "NC", nullptr), 0);
}

TEST(FieldValue, CutsOnlyTextAndClearsTheSize) {
  const struct {
    int type, size;
    const char *text, *stored;  // the first bytes of eight that were '#'
    int result;
  } rows[] = {{3, 4, "abcdef", "abc\0####", -3},
              {15, 4, "abc", "abc\0####", 0},
              {3, 6, "NE", "NE\0\0\0\0##", 0},
              {3, 5, "ab\xE2\x82\xAC", "ab\0\0\0###", -3},  // a character is not cut
              {3, 6, "ab\xE2\x82\xAC", "ab\xE2\x82\xAC\0##", 0},
              {3, 4, "\xBF\xBF\xBF\xBF", "\xBF\xBF\xBF\0####", -3},  // it is not text
              {3, 1, "", "\0#######", 0},
              {3, 1, "a", "\0#######", -3},
              {3, 0, "", "########", -3},
              {1, 8, "1", "\1\0\0\0\0\0\0\0", 0},
              {1, 2, "-2", "\xFE\xFF\xFF\xFF####", 0},
              {4, -1, "yes", "\1\0\0\0####", 0},
              {9, 4, ">", "\0\0\0\0\0\0\1@", 0},
              {10, 3, "NC", "\0\0\0#####", 0},
              {5, 8, "1", "\0\0\0\0\0\0\0\0", 0}};
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

TEST(FieldValue, DatesSetTheOrderOfTheDatabase) {
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

TEST(FieldValue, AlikeInEveryLocaleAndLinearInTheText) {
  ASSERT_TRUE(std::setlocale(LC_ALL, "de_DE.UTF-8") || std::setlocale(LC_ALL, "C.UTF-8"));
  errno = EDOM;
  EXPECT_EQ(read(orxdbDouble, 0, "1.5,5"), (Outcome{1.5, 0, 0}));
  orx::testing::allocations_left = 0;  // without room for the copy that it takes, the exponent is not read
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
