#include <orx/datetime/calendar.h>

#include <array>
#include <cmath>
#include <cstddef>

namespace orx::datetime {
namespace {

constexpr int kFirstYear = 100;
constexpr int kLastYear = 9999;
constexpr unsigned kSecondsOfDay = 86400;
constexpr int kFirstDay = -657434;  // of the year 100
constexpr int kLastDay = 2958465;   // of the year 9999

// Days from 0000-03-01, from where leap days stand at the ends of years, to 1899-12-30.
constexpr int kDaysFromMarchOfYear0 = 693899;
constexpr unsigned kDaysOf400Years = 146097;
constexpr unsigned kDaysOf4Years = 1461;

// A half second that was stored as a fraction of a day is a little less or more than one; it counts as one.
constexpr double kHalfSecondGuard = 1e-11;

bool is_leap(int year) { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }

int days_of_month(int year, int month) {
  constexpr signed char kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return kDays[month - 1] + (month == 2 && is_leap(year) ? 1 : 0);
}

// The fractions of a day that so many units are, the quotients that other programs divide anew each time.
template <std::size_t count>
constexpr std::array<double, count> fractions(double units_of_day) {
  std::array<double, count> table{};
  for (std::size_t i = 0; i < count; ++i) table[i] = static_cast<double>(i) / units_of_day;
  return table;
}

constexpr auto kHours = fractions<24>(24);
constexpr auto kMinutes = fractions<60>(1440);
constexpr auto kSeconds = fractions<60>(86400);

// Months count from March here, so that the length of a year so far is a straight line: 153 days in five
// months.
int day_number(int year, int month, int day) {
  const int march_year = month > 2 ? year : year - 1;
  const int march_month = month > 2 ? month - 3 : month + 9;
  return 365 * march_year + march_year / 4 - march_year / 100 + march_year / 400 +
         (153 * march_month + 2) / 5 + day - 1 - kDaysFromMarchOfYear0;
}

void split_day(int number, Fields& fields) {
  const auto days = static_cast<unsigned>(number + kDaysFromMarchOfYear0);
  const unsigned era = days / kDaysOf400Years;
  const unsigned day_of_era = days % kDaysOf400Years;
  const unsigned century = (4 * day_of_era + 3) / kDaysOf400Years;
  const unsigned day_of_century = day_of_era - century * kDaysOf400Years / 4;
  const unsigned year_of_century = (4 * day_of_century + 3) / kDaysOf4Years;
  const unsigned day_of_year = day_of_century - year_of_century * kDaysOf4Years / 4;
  const unsigned march_month = (5 * day_of_year + 2) / 153;
  const unsigned is_next_year = march_month < 10 ? 0 : 1;
  fields.day = static_cast<int>(day_of_year - (153 * march_month + 2) / 5 + 1);
  fields.month = static_cast<int>(march_month + 3 - 12 * is_next_year);
  fields.year = static_cast<int>(400 * era + 100 * century + year_of_century + is_next_year);
}

bool is_time(int hour, int minute, int second) {
  return hour >= 0 && hour <= 23 && minute >= 0 && minute <= 59 && second >= 0 && second <= 59;
}

}  // namespace

bool is_date(int year, int month, int day) {
  return year >= kFirstYear && year <= kLastYear && month >= 1 && month <= 12 && day >= 1 &&
         day <= days_of_month(year, month);
}

bool to_value(const Fields& fields, double& value) {
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

bool to_fields(double value, Fields& fields) {
  if (!(value > kFirstDay - 1 && value < kLastDay + 1)) return false;
  const int whole = static_cast<int>(value);  // towards zero
  const double exact = (std::fabs(value - whole) + kHalfSecondGuard) * kSecondsOfDay;
  auto second = static_cast<unsigned>(std::floor(exact + 0.5));
  int day = whole;
  if (second == kSecondsOfDay) {
    second = 0;
    if (++day > kLastDay) return false;
  }
  split_day(day, fields);
  fields.hour = static_cast<int>(second / 3600);
  fields.minute = static_cast<int>(second / 60 % 60);
  fields.second = static_cast<int>(second % 60);
  return true;
}

int completed_year(int year, int pivot) {
  if (year >= 100) return year;
  return year + (year >= 0 && year < pivot ? 2000 : 1900);
}

}  // namespace orx::datetime
