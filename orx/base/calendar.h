// Conversion between calendar fields and OLE Automation dates. Internal to the library.
//
// An OLE Automation date is a number of days since 1899-12-30, and its fraction is the time of day. Before
// that day the whole part counts backwards, while the fraction still counts forwards: -1.25 is 1899-12-29
// 06:00. The calendar is the Gregorian one throughout, for the years 100 to 9999.
//
// Neither conversion calls the C library, and every division is by a constant, which compilers turn into a
// multiplication.
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
inline constexpr int kFirstDay = -657434;  // the first day of kFirstYear
inline constexpr int kLastDay = 2958465;   // the last day of kLastYear
inline constexpr unsigned kSecondsOfDay = 86400;

// Days from 0000-03-01 to 1899-12-30. In years that begin in March the leap day is the last day.
inline constexpr int kDaysFromMarchOfYear0 = 693899;
inline constexpr unsigned kDaysOf400Years = 146097;
inline constexpr unsigned kDaysOf4Years = 1461;

// In days, slightly below a millionth of a second. A time of exactly half a second is slightly more or less
// than that once it is stored as a fraction of a day. With the guard it rounds up in either case.
inline constexpr double kHalfSecondGuard = 1e-11;

// The fractions of a day that 0, 1, 2 ... units are. Each entry is one rounded division, since other programs
// that write OLE dates divide too, and the values must agree to the last bit.
template <std::size_t count>
constexpr std::array<double, count> day_fractions(double units_of_day) {
  std::array<double, count> table{};
  for (std::size_t i = 0; i < count; ++i) table[i] = static_cast<double>(i) / units_of_day;
  return table;
}

inline constexpr auto kHourFractions = day_fractions<24>(24);
inline constexpr auto kMinuteFractions = day_fractions<60>(1440);
inline constexpr auto kSecondFractions = day_fractions<60>(kSecondsOfDay);

inline constexpr signed char kDaysOfMonths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

inline int days_of_month(int year, int month) {
  const bool is_leap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
  const bool has_leap_day = month == 2 && is_leap;
  return kDaysOfMonths[month - 1] + (has_leap_day ? 1 : 0);
}

inline bool is_date(int year, int month, int day) {
  return year >= kFirstYear && year <= kLastYear && month >= 1 && month <= 12 && day >= 1 &&
         (day <= 28 || day <= days_of_month(year, month));
}

inline bool is_time(int hour, int minute, int second) {
  return hour >= 0 && hour <= 23 && minute >= 0 && minute <= 59 && second >= 0 && second <= 59;
}

// The OLE day of a valid date. Months count from March, because then the days before a month are a straight
// line: five months have 153 days.
inline int day_number(int year, int month, int day) {
  const bool is_next_year = month <= 2;
  const auto march_year = static_cast<unsigned>(year - (is_next_year ? 1 : 0));
  const auto march_month = static_cast<unsigned>(month + (is_next_year ? 9 : -3));
  const unsigned century = march_year / 100;
  const unsigned days = kDaysOf4Years * march_year / 4 - century + century / 4 + (153 * march_month + 2) / 5;
  return static_cast<int>(days) + day - 1 - kDaysFromMarchOfYear0;
}

// The inverse of day_number; stores year, month and day. Two of the divisions are products with a factor in
// fixed point: the upper bits of the product are the quotient, and its lower bits divided by the factor are
// the remainder. The year factor is 2^32 / 1461, the month factor is 2^16 * 5 / 153, and months count from 3
// (March).
inline void split_day(int number, Fields& fields) {
  constexpr std::uint32_t kYearFactor = 2939745;
  constexpr std::uint32_t kMonthFactor = 2141;
  constexpr std::uint32_t kMonthUnit = 65536;  // 2^16
  constexpr std::uint32_t kMarch = 3 * kMonthUnit + 1305;
  // In quarters of days, because average years and average centuries have a whole number of them.
  const auto quarters = 4 * static_cast<std::uint32_t>(number + kDaysFromMarchOfYear0) + 3;
  const std::uint32_t century = quarters / kDaysOf400Years;
  const std::uint32_t quarters_of_century = quarters % kDaysOf400Years | 3;
  const std::uint64_t years = std::uint64_t{kYearFactor} * quarters_of_century;
  const std::uint32_t day_of_year = static_cast<std::uint32_t>(years) / kYearFactor / 4;
  const std::uint32_t months = kMonthFactor * day_of_year + kMarch;
  const bool is_next_year = day_of_year >= 306;  // January and February
  fields.day = static_cast<int>(months % kMonthUnit / kMonthFactor) + 1;
  fields.month = static_cast<int>(months / kMonthUnit) - (is_next_year ? 12 : 0);
  fields.year = static_cast<int>(100 * century + (years >> 32)) + (is_next_year ? 1 : 0);
}

// The OLE date of the fields. Returns false and leaves `value` as it is when the fields are not a valid date
// and time.
inline bool to_value(const Fields& fields, double& value) {
  if (!is_date(fields.year, fields.month, fields.day) ||
      !is_time(fields.hour, fields.minute, fields.second)) {
    return false;
  }
  // Other programs add in this order, and the value must agree with theirs to the last bit.
  const double day = day_number(fields.year, fields.month, fields.day);
  const double hours = kHourFractions[static_cast<std::size_t>(fields.hour)];
  const double minutes = kMinuteFractions[static_cast<std::size_t>(fields.minute)];
  const double seconds = kSecondFractions[static_cast<std::size_t>(fields.second)];
  value = day >= 0 ? day + hours + minutes + seconds : day - hours - minutes - seconds;
  return true;
}

// The fields of an OLE date, rounded to the nearest second. Returns false and leaves `fields` as they are
// when the date is outside the years 100 to 9999 or not a number.
inline bool to_fields(double value, Fields& fields) {
  // The negation also refuses a NaN, which is neither above nor below.
  if (!(value > kFirstDay - 1 && value < kLastDay + 1)) return false;
  int day = static_cast<int>(value);  // towards zero
  const double exact = (std::fabs(value - day) + kHalfSecondGuard) * kSecondsOfDay + 0.5;
  auto second = static_cast<unsigned>(exact);
  if (second == kSecondsOfDay) {
    second = 0;
    ++day;
    if (day > kLastDay) return false;
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
