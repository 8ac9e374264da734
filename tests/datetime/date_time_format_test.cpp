#include <orx/datetime/date_time_format.h>

#include <gtest/gtest.h>
#include <orx/datetime/date_defaults.h>

#include <climits>
#include <string>

namespace {

using Format = int (*)(const orxDateTime*, char*, int);

std::string formatted(double value, int kind, int order, Format format = orxDateTime_FormatString,
                      int size = 64) {
  const orxDateTime record{value, static_cast<int16_t>(order), static_cast<int16_t>(kind), 0};
  char text[64] = "untouched";
  format(&record, text, size);
  return text;
}

double value_of(int year, int month, int day, int hour, int minute, int second) {
  orxDateTime record{};
  orxDateTime_SetYearMonthDayHourMinuteSecond(&record, year, month, day, hour, minute, second);
  return record.value;
}

TEST(DateTimeFormat, KindAndOrderDecideTheText) {
  const double value = value_of(1999, 1, 2, 3, 4, 5);
  const Format full = orxDateTime_FormatSpecialFullLengthString;
  EXPECT_EQ(formatted(value, orxDateTimeFull, orxYearMonthDay), "99/01/02 03:04:05");
  EXPECT_EQ(formatted(value, orxDateTimeDate, 7), "99/01/02") << "an unknown order puts the year first";
  EXPECT_EQ(formatted(value, orxDateTimeFull, orxMonthDayYear, full), "1999/01/02 03:04:05");
  EXPECT_EQ(formatted(-1e300, orxDateTimeNumber, orxYearMonthDay), "-9223372036854774784");
  EXPECT_EQ(formatted(value, 5, orxYearMonthDay), "untouched");
  EXPECT_EQ(formatted(1e9, orxDateTimeFull, orxYearMonthDay), "-1/-1/-1 -1:-1:-1") << "no date";
  EXPECT_EQ(formatted(value, orxDateTimeFull, orxYearMonthDay, orxDateTime_FormatString, 9), "99/01/02");
  EXPECT_EQ(formatted(value, orxDateTimeFull, orxYearMonthDay, full, 1), "");
  EXPECT_EQ(formatted(value, orxDateTimeFull, orxYearMonthDay, full, 0), "untouched");
}

TEST(DateTimeFormat, DefaultsDecideDigitsAndOrders) {
  const auto text = [](int year) {
    return formatted(value_of(year, 5, 6, 0, 0, 0), orxDateTimeDate, orxYearMonthDay);
  };
  EXPECT_EQ(text(2029) + text(2030) + text(1930) + text(1929), "29/05/062030/05/0630/05/061929/05/06");
  EXPECT_EQ(orxDateTime_SetStaticDefaults(orxYearMonthDay, 50, 0), 0);
  EXPECT_EQ(text(2049) + text(1949) + text(49), "49/05/061949/05/0649/05/06");
  orxDateTime_SetStaticDefaults(orxDayMonthYear, INT_MAX, 1);
  EXPECT_EQ(text(1999), "1999/05/06");
  orxDateTime* record = orxDateTime_New(orxDateTimeFull);
  EXPECT_EQ(record->ymdFormat, orxDayMonthYear);
  EXPECT_EQ(orxDateTime_SetYMDFormat(record, orxMonthDayYear), 1);
  EXPECT_EQ(record->ymdFormat, orxMonthDayYear);
  EXPECT_EQ(orxDateTime_SetYMDFormat(record, 5), 1);
  EXPECT_EQ(record->ymdFormat, orxDayMonthYear) << "an unknown order is the default";
  orxDateTime_SetStaticDefaults(65537, 30, 0);
  orxDateTime_SetYMDFormat(record, -65535);
  EXPECT_GT(record->ymdFormat, orxYearMonthDay) << "an unknown order is not truncated to a known one";
  orxDateTime_Free(record);
  orxDateTime_SetStaticDefaults(orxYearMonthDay, 30, 0);
}

TEST(DateTimeFormat, ConvertsWithoutARecord) {
  char text[64];
  double value = -1;
  orxutil_SetDateFormatEx(orxDayMonthYear);
  EXPECT_EQ(orxutil_DateTimeToStrEx(45000.5, text, sizeof text, orxDateTimeFull), 0);
  EXPECT_STREQ(text, "15/03/23 12:00:00");
  EXPECT_EQ(orxutil_StrToDateTimeEx(text, &value), 0);
  EXPECT_EQ(value, 45000.5);
  orxutil_SetDateFormatEx(65537);
  EXPECT_EQ(orxutil_StrToDateTimeEx(text, &value), -1);
  orxutil_SetDateFormatEx(orxYearMonthDay);
  EXPECT_EQ(orxutil_StrToDateTimeEx("99/99/99", &value), -1);
  EXPECT_EQ(value, 45000.5) << "unchanged";
  EXPECT_EQ(orxutil_GetOleDateTimeToDouble(&value, &value), 0);
  EXPECT_EQ(orxutil_StrToDateTimeEx(nullptr, &value) + value, 0);
  EXPECT_EQ(orxutil_StrToDateTimeEx("", nullptr) + orxutil_DateTimeToStrEx(0, nullptr, 9, orxDateTimeFull) +
                orxutil_GetOleDateTimeToDouble(nullptr, &value) + orxDateTimeTest(),
            -3);
}

}  // namespace
