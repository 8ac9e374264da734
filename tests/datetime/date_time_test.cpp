#include <orx/datetime/date_time.h>

#include <gtest/gtest.h>
#include <orx/datetime/date_defaults.h>

#include <array>
#include <chrono>
#include <climits>
#include <cmath>
#include <random>
#include <tuple>

namespace {

using Fields = std::array<int, 6>;  // from the year to the second

Fields fields_of(double value) {
  const orxDateTime record{value, orxYearMonthDay, orxDateTimeFull, 0};
  Fields f;
  orxDateTime_GetYearMonthDayHourMinuteSecond(&record, &f[0], &f[1], &f[2], &f[3], &f[4], &f[5]);
  return f;
}

int set(orxDateTime& record, const Fields& f) {
  return orxDateTime_SetYearMonthDayHourMinuteSecond(&record, f[0], f[1], f[2], f[3], f[4], f[5]);
}

TEST(DateTime, RoundsToTheNearestSecond) {
  constexpr Fields kNoDate{-1, -1, -1, -1, -1, -1};
  using Row = std::pair<double, Fields>;
  for (const auto& [value, fields] :
       {Row{-1.25, {1899, 12, 29, 6, 0, 0}},  // the fraction counts forward
        Row{0.5 / 86400, {1899, 12, 30, 0, 0, 1}}, Row{0.499999 / 86400, {1899, 12, 30, 0, 0, 0}},
        Row{0.9999943, {1899, 12, 31, 0, 0, 0}}, Row{-1.9999943, {1899, 12, 30, 0, 0, 0}},
        Row{-657434.999999, {100, 1, 2, 0, 0, 0}}, Row{2958465.999988, {9999, 12, 31, 23, 59, 59}},
        Row{0x1.5f905b9690e08p+15, {2023, 3, 15, 4, 17, 36}},     // half a second, stored as slightly less
        Row{-0x1.0daac75f623a6p+17, {1521, 12, 23, 13, 22, 56}},  // a millionth less than half a second
        // The last value would be rounded to the year 10000.
        Row{-657435, kNoDate}, Row{2958466, kNoDate}, Row{std::nan(""), kNoDate},
        Row{2958465.999995, kNoDate}})
    EXPECT_EQ(fields_of(value), fields) << std::hexfloat << value;
}

// Compares with the calendar of the C++ library. A refused date must leave the value unchanged. An accepted
// date must have the quotients and the order of sums that other programs use, to the last bit.
bool agrees(const Fields& fields) {
  using namespace std::chrono;
  const auto& [y, m, d, h, min, s] = fields;
  const year_month_day date{year(y), month(static_cast<unsigned>(m)), day(static_cast<unsigned>(d))};
  orxDateTime record{0.25, orxYearMonthDay, orxDateTimeFull, 0};
  const int refused = set(record, fields);
  if (!date.ok()) return refused == 1 && record.value == 0.25;
  const auto number = (sys_days(date) - sys_days(1899y / December / 30)).count();
  const double sign = number < 0 ? -1 : 1;
  const double value = static_cast<double>(number) + sign * h / 24 + sign * min / 1440 + sign * s / 86400;
  return refused == 0 && record.value == value && fields_of(value) == fields;
}

TEST(DateTime, EveryDayAgreesWithTheCalendarOfTheStandardLibrary) {
  std::mt19937 random(18991230);
  const auto below = [&](unsigned count) { return static_cast<int>(random() % count); };
  for (int year = 100; year <= 9999; ++year) {
    for (int month = 0; month <= 13; ++month) {
      for (int day = 0; day <= 32; ++day) {
        const Fields fields{year, month, day, below(24), below(60), below(60)};
        ASSERT_TRUE(agrees(fields)) << ::testing::PrintToString(fields);
      }
    }
  }
}

TEST(DateTime, CompletesYearsAndDiagnosesInvalidFields) {
  const std::tuple<int, Fields, int, int, Fields> cases[] = {
      {orxDateTimeFull, {99, 1, 2, 3, 4, 5}, 0, 0, {1999, 1, 2, 3, 4, 5}},
      {orxDateTimeFull, {29, 1, 2, 0, 0, 0}, 0, 0, {2029, 1, 2, 0, 0, 0}},
      {orxDateTimeFull, {30, 1, 2, 0, 0, 0}, 0, 0, {1930, 1, 2, 0, 0, 0}},
      {orxDateTimeFull, {-1, 1, 2, 0, 0, 0}, 0, 0, {1899, 1, 2, 0, 0, 0}},
      {orxDateTimeFull, {1900, 2, 29, 0, 0, 0}, 1, 1, {}},  // reported as an invalid month
      {orxDateTimeDate, {2001, 2, 29, 0, 0, 0}, 1, 3, {}},
      {orxDateTimeFull, {2001, 13, 1, 0, 0, 0}, 1, 1, {}},
      {orxDateTimeFull, {10000, 1, 1, 0, 0, 0}, 1, 2, {}},
      {orxDateTimeFull, {INT_MIN, INT_MIN, INT_MIN, 0, 0, 0}, 1, 2, {}},
      {orxDateTimeFull, {2000, 1, 1, 24, 0, 0}, 1, 4, {}},
      {orxDateTimeTime, {2000, 1, 1, 23, 60, 0}, 1, 5, {}},
      {orxDateTimeTime, {2000, 1, 1, 23, 59, 60}, 1, 6, {}},
      {orxDateTimeDate, {2000, 1, 1, 24, 0, 0}, 1, 0, {}},  // this kind has no time to diagnose
      {orxDateTimeNumber, {2000, 13, 1, 0, 0, 0}, 1, 0, {}},
  };
  for (const auto& [kind, fields, result, code, read] : cases) {
    orxDateTime record{7, orxYearMonthDay, static_cast<int16_t>(kind), 99};
    EXPECT_EQ(set(record, fields), result);
    EXPECT_EQ(record.errorCode, code) << ::testing::PrintToString(fields);
    EXPECT_EQ(result == 0 ? fields_of(record.value) : Fields{}, read);
  }
  for (const auto& [kind, code] :
       {std::pair<int, int>(orxDateTimeFull, 2), {orxDateTimeDate, 0}, {orxDateTimeTime, 4}}) {
    orxDateTime record{7, orxYearMonthDay, static_cast<int16_t>(kind), 0};
    EXPECT_EQ(orxDateTime_SetHourMinuteSecond(&record, 24, 0, 0), 1);
    EXPECT_EQ(record.errorCode, code) << kind;
  }
  EXPECT_EQ(orxDateTime_SetYearMonthDay(nullptr, 2000, 1, 1), 1);
  EXPECT_EQ(orxDateTime_SetHourMinuteSecond(nullptr, 0, 0, 0), 1);
}

TEST(DateTime, ErrorsHaveMessages) {
  orxDateTime record{0, orxYearMonthDay, orxDateTimeFull, 7};
  char text[11] = "kept";
  EXPECT_EQ(orxDateTime_DiagnoseError(&record, text), 7);
  EXPECT_STREQ(text, "kept") << "an unknown error has no text";
  EXPECT_EQ(orxDateTime_SetHourMinuteSecond(&record, 12, 0, 0), 0);
  EXPECT_EQ(orxDateTime_DiagnoseError(&record, text), 0);
  EXPECT_STREQ(text, "No errors.");
  EXPECT_EQ(record.value, 0.5);
}

}  // namespace
