// Fields of the calendar and OLE Automation dates, without a division or a call. Internal to the library.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace orx::calendar {

struct Fields {
  int year = 1899;  // day 0
  int month = 12;
  int day = 30;
  int hour = 0;
  int minute = 0;
  int second = 0;
};

inline constexpr int kFirstYear = 100;
inline constexpr int kLastYear = 9999;
inline constexpr int kFirstDay = -657434;  // of the year 100
inline constexpr int kLastDay = 2958465;   // of the year 9999
inline constexpr unsigned kSecondsOfDay = 86400;

// Days from 0000-03-01, from where leap days stand at the ends of years, to 1899-12-30.
inline constexpr int kDaysFromMarchOfYear0 = 693899;
inline constexpr unsigned kDaysOf400Years = 146097;
inline constexpr unsigned kDaysOf4Years = 1461;

// A half second that was stored as a fraction of a day is a little less or more than one; it counts as one.
inline constexpr double kHalfSecondGuard = 1e-11;

// The fractions of a day that so many units are, the quotients that other programs divide anew each time.
template <std::size_t count>
constexpr std::array<double, count> fractions(double units_of_day) {
  std::array<double, count> table{};
  for (std::size_t i = 0; i < count; ++i) table[i] = static_cast<double>(i) / units_of_day;
  return table;
}

inline constexpr auto kHours = fractions<24>(24);
inline constexpr auto kMinutes = fractions<60>(1440);
inline constexpr auto kSeconds = fractions<60>(86400);

inline constexpr signed char kDaysOfMonths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

inline int days_of_month(int year, int month) {
  const bool is_leap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
  return kDaysOfMonths[month - 1] + (month == 2 && is_leap ? 1 : 0);
}

inline bool is_date(int year, int month, int day) {
  return year >= kFirstYear && year <= kLastYear && month >= 1 && month <= 12 && day >= 1 &&
         (day <= 28 || day <= days_of_month(year, month));
}

inline bool is_time(int hour, int minute, int second) {
  return hour >= 0 && hour <= 23 && minute >= 0 && minute <= 59 && second >= 0 && second <= 59;
}

// Months count from March here, so that the length of a year so far is a straight line: 153 days in five
// months.
inline int day_number(int year, int month, int day) {
  const bool is_next_year = month <= 2;
  const auto march_year = static_cast<unsigned>(year - (is_next_year ? 1 : 0));
  const auto march_month = static_cast<unsigned>(month + (is_next_year ? 9 : -3));
  const unsigned century = march_year / 100;
  const unsigned days = kDaysOf4Years * march_year / 4 - century + century / 4 + (153 * march_month + 2) / 5;
  return static_cast<int>(days) + day - 1 - kDaysFromMarchOfYear0;
}

// One product gives a quotient in its upper half and, times the factor, the remainder in its lower half. For
// the years of a century the factor is 2^32 / 1461, for the months 2^16 * 5 / 153, and the months begin
// with 3.
inline void split_day(int number, Fields& fields) {
  constexpr std::uint32_t kYearFactor = 2939745;
  constexpr std::uint32_t kMonthFactor = 2141;
  constexpr std::uint32_t kMarch = 3 * 65536 + 1305;
  // Quarters of days, since a century and a year have a whole number of them.
  const auto quarters = 4 * static_cast<std::uint32_t>(number + kDaysFromMarchOfYear0) + 3;
  const std::uint32_t century = quarters / kDaysOf400Years;
  const std::uint32_t quarters_of_century = quarters % kDaysOf400Years | 3;
  const std::uint64_t years = std::uint64_t{kYearFactor} * quarters_of_century;
  const std::uint32_t day_of_year = static_cast<std::uint32_t>(years) / kYearFactor / 4;
  const std::uint32_t months = kMonthFactor * day_of_year + kMarch;
  const bool is_next_year = day_of_year >= 306;  // January and February
  fields.day = static_cast<int>(months % 65536 / kMonthFactor) + 1;
  fields.month = static_cast<int>(months / 65536) - (is_next_year ? 12 : 0);
  fields.year = static_cast<int>(100 * century + (years >> 32)) + (is_next_year ? 1 : 0);
}

// False, with the output unchanged, for fields that make no date or time.
inline bool to_value(const Fields& fields, double& value) {
  if (!is_date(fields.year, fields.month, fields.day) ||
      !is_time(fields.hour, fields.minute, fields.second)) {
    return false;
  }
  // Added one by one, in this order: other programs make the same value of the same fields, to the last bit.
  const double day = day_number(fields.year, fields.month, fields.day);
  const double hours = kHours[static_cast<std::size_t>(fields.hour)];
  const double minutes = kMinutes[static_cast<std::size_t>(fields.minute)];
  const double seconds = kSeconds[static_cast<std::size_t>(fields.second)];
  value = day >= 0 ? day + hours + minutes + seconds : day - hours - minutes - seconds;
  return true;
}

// To the nearest second. False, with the output unchanged, for what lies outside the years 100 to 9999, or is
// no number.
inline bool to_fields(double value, Fields& fields) {
  if (!(value > kFirstDay - 1 && value < kLastDay + 1)) return false;
  int day = static_cast<int>(value);  // towards zero
  const double exact = (std::fabs(value - day) + kHalfSecondGuard) * kSecondsOfDay + 0.5;
  auto second = static_cast<unsigned>(exact);
  if (second == kSecondsOfDay) {
    second = 0;
    if (++day > kLastDay) return false;
  }
  split_day(day, fields);
  const unsigned minute = second / 60;
  const unsigned hour = second / 3600;
  fields.hour = static_cast<int>(hour);
  fields.minute = static_cast<int>(minute - 60 * hour);
  fields.second = static_cast<int>(second - 60 * minute);
  return true;
}

}  // namespace orx::calendar
