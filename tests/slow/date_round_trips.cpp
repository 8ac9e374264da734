// The calendar over its whole length: every day once, and ten million random dates and times, set and read
// back through the exported functions and compared with the calendar of the C++ library. The exit status says
// whether all agree.
#include <orx/datetime/date_time.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <random>

namespace {

using namespace std::chrono;

constexpr std::uint64_t kSeed = 18991230;
constexpr long kRoundTrips = 10'000'000;
constexpr sys_days kDay0{1899y / December / 30};

struct Fields {
  int year, month, day, hour, minute, second;
  bool operator==(const Fields&) const = default;
};

year_month_day date_of(const Fields& f) {
  return {year(f.year), month(static_cast<unsigned>(f.month)), day(static_cast<unsigned>(f.day))};
}

bool is_valid(const Fields& f) {
  return f.year >= 100 && f.year <= 9999 && date_of(f).ok() && f.hour < 24 && f.minute < 60 && f.second < 60;
}

// Refused fields leave the value. The value of others is compared to the last bit, by the quotients and the
// order of sums that other programs use, so that no fault in reading makes up for one in setting.
bool agrees(const Fields& in) {
  constexpr double kUnset = 0.25;
  orxDateTime record{kUnset, orxYearMonthDay, orxDateTimeFull, 0};
  const bool is_set = orxDateTime_SetYearMonthDayHourMinuteSecond(&record, in.year, in.month, in.day, in.hour,
                                                                  in.minute, in.second) == 0;
  if (is_set != is_valid(in)) return false;
  if (!is_set) return record.value == kUnset;

  Fields out;
  orxDateTime_GetYearMonthDayHourMinuteSecond(&record, &out.year, &out.month, &out.day, &out.hour,
                                              &out.minute, &out.second);
  const auto day = static_cast<double>((sys_days(date_of(in)) - kDay0).count());
  const double sign = day < 0 ? -1 : 1;
  return out == in &&
         record.value == day + sign * in.hour / 24 + sign * in.minute / 1440 + sign * in.second / 86400;
}

// Every field may be one too large, and the month and the day one too small.
Fields random_fields(std::mt19937_64& random) {
  std::uint64_t rest = random();
  const auto from_to = [&rest](int first, int last) {
    const auto count = static_cast<unsigned>(last - first + 1);
    const int value = first + static_cast<int>(rest % count);
    rest /= count;
    return value;
  };
  // Braces keep the order.
  return {from_to(100, 10000), from_to(0, 13), from_to(0, 32),
          from_to(0, 24),      from_to(0, 60), from_to(0, 60)};
}

struct Tally {
  long days = 0, round_trips = 0, refused = 0, wrong = 0;

  void Count(const Fields& f, long& kind) {
    ++kind;
    if (agrees(f) || ++wrong > 1) return;
    std::fprintf(stderr, "the first that is wrong: %d-%d-%d %d:%d:%d\n", f.year, f.month, f.day, f.hour,
                 f.minute, f.second);
  }
};

}  // namespace

int main() {
  Tally tally;
  for (sys_days day{100y / January / 1}; day <= sys_days{9999y / December / 31}; day += days(1)) {
    const year_month_day date = day;
    tally.Count({int{date.year()}, static_cast<int>(unsigned{date.month()}),
                 static_cast<int>(unsigned{date.day()}), 0, 0, 0},
                tally.days);
  }
  std::mt19937_64 random(kSeed);
  while (tally.round_trips < kRoundTrips) {
    const Fields fields = random_fields(random);
    tally.Count(fields, is_valid(fields) ? tally.round_trips : tally.refused);
  }
  std::printf("dates, seed %llu: %ld days, %ld random round trips, %ld refused, %ld wrong\n",
              static_cast<unsigned long long>(kSeed), tally.days, tally.round_trips, tally.refused,
              tally.wrong);
  return tally.days == 3'615'900 && tally.wrong == 0 ? 0 : 1;
}
