// Dates against the C library, a reader written for the one layout, and the calendar of the C++ library.
#include <benchmark/benchmark.h>
#include <orx/datetime/date_time.h>
#include <orx/datetime/date_time_format.h>
#include <orx/datetime/date_time_parse.h>
#include <time.h>

#include <charconv>
#include <chrono>
#include <cstring>

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

// Knows where every number stands, and makes the value by the same calls.
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

void format_orx(benchmark::State& state) {
  orxDateTime record{kValue, orxYearMonthDay, orxDateTimeFull, 0};
  char text[64];
  for (auto _ : state) {
    benchmark::DoNotOptimize(record);
    orxDateTime_FormatSpecialFullLengthString(&record, text, sizeof text);
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

void set_and_get_chrono(benchmark::State& state) {
  using namespace std::chrono;
  int f[6] = {2024, 3, 5, 10, 20, 30};
  for (auto _ : state) {
    benchmark::DoNotOptimize(f);
    const year_month_day date{year(f[0]), month(static_cast<unsigned>(f[1])),
                              day(static_cast<unsigned>(f[2]))};
    if (!date.ok()) state.SkipWithError("no date");
    sys_seconds value = sys_days(date) + hours(f[3]) + minutes(f[4]) + seconds(f[5]);
    benchmark::DoNotOptimize(value);
    const auto days_since = floor<days>(value);
    const year_month_day back(days_since);
    const hh_mm_ss time(value - days_since);
    f[0] = static_cast<int>(back.year());
    f[1] = static_cast<int>(static_cast<unsigned>(back.month()));
    f[2] = static_cast<int>(static_cast<unsigned>(back.day()));
    f[3] = static_cast<int>(time.hours().count());
    f[4] = static_cast<int>(time.minutes().count());
    f[5] = static_cast<int>(time.seconds().count());
  }
}

BENCHMARK(parse_orx);
BENCHMARK(parse_strptime);
BENCHMARK(parse_from_chars);
BENCHMARK(format_orx);
BENCHMARK(format_strftime);
BENCHMARK(set_and_get_orx);
BENCHMARK(set_and_get_chrono);

}  // namespace
