#include <orx/datetime/date_time.h>

#include <gtest/gtest.h>
#include <orx/datetime/date_defaults.h>

#include <climits>
#include <cmath>
#include <cstdio>
#include <limits>
#include <string>

namespace {

std::string fields_of(double value) {
  orxDateTime record{value, 2, orxDateTimeFull, 0};
  int f[6];
  orxDateTime_GetYearMonthDayHourMinuteSecond(&record, f, f + 1, f + 2, f + 3, f + 4, f + 5);
  char text[64];
  std::snprintf(text, sizeof text, "%d-%d-%d %d:%d:%d", f[0], f[1], f[2], f[3], f[4], f[5]);
  return text;
}

TEST(DateTime, ValuesAreReadToTheNearestSecond) {
  const std::pair<double, const char*> cases[] = {
      {0, "1899-12-30 0:0:0"},
      {-1.25, "1899-12-29 6:0:0"},  // the fraction counts forward
      {60, "1900-2-28 0:0:0"},
      {45000.5, "2023-3-15 12:0:0"},
      {0.5 / 86400, "1899-12-30 0:0:1"},
      {0.499999 / 86400, "1899-12-30 0:0:0"},
      {0.9999943, "1899-12-31 0:0:0"},
      {-1.9999943, "1899-12-30 0:0:0"},
      {-657434, "100-1-1 0:0:0"},
      {-657434.999999, "100-1-2 0:0:0"},
      {2958465.999988, "9999-12-31 23:59:59"},
      {0x1.5f90000000000p+15, "2023-3-15 0:0:0"},
      {-0x1.0daac75f623a6p+17, "1521-12-23 13:22:56"},
      {0x1.8fc69474cfd58p+15, "2040-2-5 6:57:32"},
      {0x1.1773b8e4fa641p+21, "8167-10-22 2:41:0"},
      // No dates: the last one would be of the year 10000.
      {-657435, "-1--1--1 -1:-1:-1"},
      {2958466, "-1--1--1 -1:-1:-1"},
      {std::nan(""), "-1--1--1 -1:-1:-1"},
      {-std::numeric_limits<double>::infinity(), "-1--1--1 -1:-1:-1"},
      {2958465.999995, "-1--1--1 -1:-1:-1"},
  };
  for (const auto& [value, fields] : cases) EXPECT_EQ(fields_of(value), fields) << std::hexfloat << value;
}

TEST(DateTime, EveryDayIsThatDay) {
  orxDateTime* record = orxDateTime_New(orxDateTimeFull);
  double day = -657434;
  for (int year = 100; year <= 9999; ++year) {
    for (int month = 1; month <= 12; ++month) {
      for (int number = 1; number <= 31; ++number) {
        if (orxDateTime_SetYearMonthDayHourMinuteSecond(record, year, month, number, 23, 59, 59) != 0)
          continue;
        ASSERT_EQ(std::trunc(record->value), day++);
        int d = 0, m = 0, s = 0;
        orxDateTime_GetYearMonthDayHourMinuteSecond(record, nullptr, &m, &d, nullptr, nullptr, &s);
        ASSERT_TRUE(d == number && m == month && s == 59) << year << '-' << month << '-' << number;
      }
    }
  }
  EXPECT_EQ(day, 2958466);
  orxDateTime_Free(record);
}

TEST(DateTime, FieldsAreCompletedAndRefused) {
  const struct {
    int kind, fields[6], result, code;
    const char* read;
  } cases[] = {
      {2, {99, 1, 2, 3, 4, 5}, 0, 0, "1999-1-2 3:4:5"},
      {2, {29, 1, 2, 0, 0, 0}, 0, 0, "2029-1-2 0:0:0"},
      {2, {30, 1, 2, 0, 0, 0}, 0, 0, "1930-1-2 0:0:0"},
      {2, {-1, 1, 2, 0, 0, 0}, 0, 0, "1899-1-2 0:0:0"},
      {2, {1900, 2, 29, 0, 0, 0}, 1, 1, ""},  // told as a wrong month
      {2, {2001, 2, 29, 0, 0, 0}, 1, 3, ""},
      {2, {2001, 13, 1, 0, 0, 0}, 1, 1, ""},
      {2, {10000, 1, 1, 0, 0, 0}, 1, 2, ""},
      {2, {INT_MIN, INT_MIN, INT_MIN, 0, 0, 0}, 1, 2, ""},
      {2, {INT_MAX, 1, 1, INT_MAX, 0, 0}, 1, 2, ""},
      {2, {2000, 1, 1, 24, 0, 0}, 1, 4, ""},
      {4, {2000, 1, 1, 23, 60, 0}, 1, 5, ""},
      {4, {2000, 1, 1, 23, 59, 60}, 1, 6, ""},
      {3, {2000, 1, 1, 24, 0, 0}, 1, 0, ""},  // refused, but not for its date
      {1, {2000, 13, 1, 0, 0, 0}, 1, 0, ""},
  };
  for (const auto& c : cases) {
    orxDateTime record{7, 2, static_cast<int16_t>(c.kind), 99};
    const auto& [year, month, day, hour, minute, second] = c.fields;
    EXPECT_EQ(orxDateTime_SetYearMonthDayHourMinuteSecond(&record, year, month, day, hour, minute, second),
              c.result);
    EXPECT_EQ(record.errorCode, c.code) << year << '-' << month;
    EXPECT_EQ(c.result == 0 ? fields_of(record.value) : "", c.read);
  }
  for (const auto& [kind, code] : {std::pair(2, 2), {3, 0}, {4, 4}}) {
    orxDateTime record{7, 2, static_cast<int16_t>(kind), 0};
    EXPECT_EQ(orxDateTime_SetHourMinuteSecond(&record, 24, 0, 0), 1);
    EXPECT_EQ(record.errorCode, code) << kind;
  }
  EXPECT_EQ(
      orxDateTime_SetYearMonthDay(nullptr, 2000, 1, 1) + orxDateTime_SetHourMinuteSecond(nullptr, 0, 0, 0),
      2);
}

TEST(DateTime, ErrorsHaveTexts) {
  orxDateTime record{0, 2, 2, 6};
  char text[23];
  EXPECT_EQ(orxDateTime_DiagnoseError(&record, text), 6);
  EXPECT_STREQ(text, "Error: Invalid second.");
  record.errorCode = 7;
  EXPECT_EQ(orxDateTime_DiagnoseError(&record, text), 7);
  EXPECT_STREQ(text, "Error: Invalid second.") << "left as it was";
  orxDateTime_SetHourMinuteSecond(&record, 12, 0, 0);
  EXPECT_EQ(orxDateTime_DiagnoseError(&record, text), 0);
  EXPECT_STREQ(text, "No errors.");
  EXPECT_EQ(record.value, 0.5);
}

}  // namespace
