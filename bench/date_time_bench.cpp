// Dates against the C library, a parser for one fixed layout, and two calendars of C++: std::chrono and the
// library that it is based on.
#include <benchmark/benchmark.h>
#include <date/date.h>
#include <orx/datetime/date_time.h>
#include <orx/datetime/date_time_format.h>
#include <orx/datetime/date_time_parse.h>
#include <time.h>

#include <charconv>
#include <chrono>
#include <cmath>

namespace {

constexpr char kText[] = "2024/03/05 10:20:30";
const double kValue = [] {
  orxDateTime record{0, orxYearMonthDay, orxDateTimeFull, 0};
  orxDateTime_ParseString(&record, kText);
  return record.value;
}();

void parse_orx(benchmark::State& state) {
  orxDateTime record{0, orxYearMonthDay, orxDateTimeFull, 0};
  const char* text = kText;
  for (auto _ : state) {
    benchmark::DoNotOptimize(text);
    orxDateTime_ParseString(&record, text);
    benchmark::DoNotOptimize(record);
  }
}

void parse_strptime(benchmark::State& state) {
  const char* text = kText;
  for (auto _ : state) {
    benchmark::DoNotOptimize(text);
    tm fields{};
    strptime(text, "%Y/%m/%d %H:%M:%S", &fields);
    benchmark::DoNotOptimize(timegm(&fields));
  }
}

// Parses only this layout, and sets the value through the same function.
void parse_from_chars(benchmark::State& state) {
  orxDateTime record{0, orxYearMonthDay, orxDateTimeFull, 0};
  const char* text = kText;
  for (auto _ : state) {
    benchmark::DoNotOptimize(text);
    int f[6];
    const char* at = text;
    for (int& number : f) at = std::from_chars(at, text + sizeof kText - 1, number).ptr + 1;
    orxDateTime_SetYearMonthDayHourMinuteSecond(&record, f[0], f[1], f[2], f[3], f[4], f[5]);
    benchmark::DoNotOptimize(record);
  }
}

template <int (*format)(const orxDateTime*, char*, int)>
void format_orx(benchmark::State& state) {
  orxDateTime record{kValue, orxYearMonthDay, orxDateTimeFull, 0};
  char text[64];
  for (auto _ : state) {
    benchmark::DoNotOptimize(record);
    format(&record, text, sizeof text);
    benchmark::DoNotOptimize(text);
  }
}

void format_strftime(benchmark::State& state) {
  time_t seconds = 1709634030;
  char text[64];
  for (auto _ : state) {
    benchmark::DoNotOptimize(seconds);
    tm fields;
    gmtime_r(&seconds, &fields);
    strftime(text, sizeof text, "%Y/%m/%d %H:%M:%S", &fields);
    benchmark::DoNotOptimize(text);
  }
}

void set_and_get_orx(benchmark::State& state) {
  orxDateTime record{0, orxYearMonthDay, orxDateTimeFull, 0};
  int f[6] = {2024, 3, 5, 10, 20, 30};
  for (auto _ : state) {
    benchmark::DoNotOptimize(f);
    orxDateTime_SetYearMonthDayHourMinuteSecond(&record, f[0], f[1], f[2], f[3], f[4], f[5]);
    benchmark::DoNotOptimize(record);
    orxDateTime_GetYearMonthDayHourMinuteSecond(&record, f, f + 1, f + 2, f + 3, f + 4, f + 5);
  }
}

struct StandardCalendar {
  using Year = std::chrono::year;
  using Month = std::chrono::month;
  using Day = std::chrono::day;
  using Date = std::chrono::year_month_day;
  using Days = std::chrono::sys_days;
  using Time = std::chrono::hh_mm_ss<std::chrono::seconds>;
};

struct DateLibrary {
  using Year = date::year;
  using Month = date::month;
  using Day = date::day;
  using Date = date::year_month_day;
  using Days = date::sys_days;
  using Time = date::hh_mm_ss<std::chrono::seconds>;
};

using Seconds = std::chrono::sys_seconds;

template <class Calendar>
bool from_fields(const int (&f)[6], Seconds& value) {
  using namespace std::chrono;
  const typename Calendar::Date date{typename Calendar::Year(f[0]),
                                     typename Calendar::Month(static_cast<unsigned>(f[1])),
                                     typename Calendar::Day(static_cast<unsigned>(f[2]))};
  if (!date.ok() || f[3] < 0 || f[3] > 23 || f[4] < 0 || f[4] > 59 || f[5] < 0 || f[5] > 59) return false;
  value = typename Calendar::Days(date) + hours(f[3]) + minutes(f[4]) + seconds(f[5]);
  return true;
}

template <class Calendar>
void to_fields(Seconds value, int (&f)[6]) {
  const auto day = std::chrono::floor<typename Calendar::Days::duration>(value);
  const typename Calendar::Date date(day);
  const typename Calendar::Time time(value - day);
  f[0] = static_cast<int>(date.year());
  f[1] = static_cast<int>(static_cast<unsigned>(date.month()));
  f[2] = static_cast<int>(static_cast<unsigned>(date.day()));
  f[3] = static_cast<int>(time.hours().count());
  f[4] = static_cast<int>(time.minutes().count());
  f[5] = static_cast<int>(time.seconds().count());
}

template <class Calendar>
void set_and_get(benchmark::State& state) {
  int f[6] = {2024, 3, 5, 10, 20, 30};
  for (auto _ : state) {
    benchmark::DoNotOptimize(f);
    Seconds value;
    if (!from_fields<Calendar>(f, value)) {
      state.SkipWithError("no date");
      break;
    }
    benchmark::DoNotOptimize(value);
    to_fields<Calendar>(value, f);
  }
}

// The conversions that a program needs to store dates as the same number of days as orx.
constexpr auto kDay0 = std::chrono::sys_days(std::chrono::year(1899) / 12 / 30);

double to_ole(Seconds value) {
  const auto day = std::chrono::floor<std::chrono::days>(value);
  const auto whole = static_cast<double>((day - kDay0).count());
  const double fraction = static_cast<double>((value - day).count()) / 86400;
  return whole < 0 ? whole - fraction : whole + fraction;
}

Seconds from_ole(double value) {
  const double whole = std::trunc(value);
  return kDay0 + std::chrono::days(static_cast<int>(whole)) +
         std::chrono::seconds(std::lround(std::abs(value - whole) * 86400));
}

template <class Calendar>
void set_and_get_ole(benchmark::State& state) {
  int f[6] = {2024, 3, 5, 10, 20, 30};
  for (auto _ : state) {
    benchmark::DoNotOptimize(f);
    Seconds seconds;
    if (!from_fields<Calendar>(f, seconds)) {
      state.SkipWithError("no date");
      break;
    }
    double value = to_ole(seconds);
    benchmark::DoNotOptimize(value);
    to_fields<Calendar>(from_ole(value), f);
  }
}

BENCHMARK(parse_orx);
BENCHMARK(parse_strptime);
BENCHMARK(parse_from_chars);
BENCHMARK_TEMPLATE(format_orx, orxDateTime_FormatString)->Name("format_orx");
BENCHMARK_TEMPLATE(format_orx, orxDateTime_FormatSpecialFullLengthString)->Name("format_orx_full_length");
BENCHMARK(format_strftime);
BENCHMARK(set_and_get_orx);
BENCHMARK_TEMPLATE(set_and_get, DateLibrary)->Name("set_and_get_date");
BENCHMARK_TEMPLATE(set_and_get, StandardCalendar)->Name("set_and_get_chrono");
BENCHMARK_TEMPLATE(set_and_get_ole, DateLibrary)->Name("set_and_get_date_ole");

}  // namespace
