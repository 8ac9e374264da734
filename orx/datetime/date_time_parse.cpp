#include <orx/datetime/date_time_parse.h>

#include <orx/compat/number_text.h>
#include <orx/platform/clock.h>
#include <orx/platform/code_page.h>

#include <algorithm>
#include <climits>
#include <cstring>

namespace {

constexpr int kNoNumberInDate = 7;
constexpr int kNoBlankBetween = -1;

struct Numbers {
  int number[3] = {0, 0, 0};
  int count = 0;
};

bool is_digit(char c) { return c >= '0' && c <= '9'; }

// The next integer, behind white space and a sign; null when there is none. One too large for an int stays
// large: it is for the calendar to refuse it.
const char* read_integer(const char* text, int& number) {
  while (orx::platform::is_space(*text)) ++text;
  const bool is_negative = *text == '-';
  if (is_negative || *text == '+') ++text;
  if (!is_digit(*text)) return nullptr;
  int magnitude = 0;
  for (; is_digit(*text); ++text) {
    const int digit = *text - '0';
    magnitude = magnitude > (INT_MAX - digit) / 10 ? INT_MAX : magnitude * 10 + digit;
  }
  number = is_negative ? -magnitude : magnitude;
  return text;
}

Numbers read_numbers(const char* text, char separator) {
  Numbers numbers;
  for (;;) {
    text = read_integer(text, numbers.number[numbers.count]);
    if (text == nullptr || ++numbers.count == 3 || *text != separator) return numbers;
    ++text;
  }
}

struct Date {
  int year = 0;
  int month = 0;
  int day = 0;
};

// Where the date and the time of a text begin; null: the text has none.
struct Parts {
  const char* date;
  const char* time;
};

// Each is read only as far as its numbers reach, so it does no harm that one begins with the other.
Parts split(const char* text) {
  const char* colon = std::strchr(text, ':');
  const char* slash = std::strchr(text, '/');
  const char* blank = std::strchr(text, ' ');
  if (blank == nullptr) return slash != nullptr ? Parts{text, nullptr} : Parts{nullptr, text};
  const bool is_time_first = (colon == nullptr || colon < blank) && slash != nullptr && slash > blank;
  return is_time_first ? Parts{blank, text} : Parts{text, blank};
}

// What is missing of a date is today's.
Date date_of(const Numbers& numbers, int order) {
  const orx::platform::LocalTime today =
      numbers.count < 3 ? orx::platform::local_time() : orx::platform::LocalTime{};
  const auto& [a, b, c] = numbers.number;
  if (numbers.count == 0) return {today.year, today.month, today.day};
  if (numbers.count == 1) return {today.year, today.month, a};
  if (numbers.count == 2) {
    switch (order) {
      case orxDayMonthYear:
        return {today.year, b, a};
      case orxMonthDayYear:
      case orxYearMonthDay:
        return {today.year, a, b};
      default:
        return {};
    }
  }
  switch (order) {
    case orxMonthDayYear:
      return {c, a, b};
    case orxDayMonthYear:
      return {c, b, a};
    case orxYearMonthDay:
      return {a, b, c};
    default:
      return {};
  }
}

int store(orxDateTime& dt, const Date& date, const int (&time)[3]) {
  if (dt.kind == orxDateTimeTime) return orxDateTime_SetHourMinuteSecond(&dt, time[0], time[1], time[2]);
  return orxDateTime_SetYearMonthDayHourMinuteSecond(&dt, date.year, date.month, date.day, time[0], time[1],
                                                     time[2]);
}

int store_now(orxDateTime& dt) {
  const orx::platform::LocalTime now = orx::platform::local_time();
  const bool has_time = dt.kind == orxDateTimeFull || dt.kind == orxDateTimeTime;
  const int time[3] = {has_time ? now.hour : 0, has_time ? now.minute : 0, has_time ? now.second : 0};
  return store(dt, {now.year, now.month, now.day}, time);
}

}  // namespace

int orxDateTime_ParseString(orxDateTime* dt, const char* text) {
  if (text == nullptr) return 0;
  if (dt == nullptr) return 1;
  if (dt->kind == orxDateTimeNumber) {
    dt->value = orx::compat::read_double(text);
    return 0;
  }
  if (std::strcmp(text, "GETDATE()") == 0) return store_now(*dt);

  const bool has_blank = std::strchr(text, ' ') != nullptr;
  if (!has_blank && std::strchr(text, ':') != nullptr && std::strchr(text, '/') != nullptr)
    return kNoBlankBetween;
  const Parts parts = split(text);
  Numbers date, time;
  if (parts.date != nullptr) date = read_numbers(parts.date, '/');
  if (parts.date != nullptr && date.count == 0) return kNoNumberInDate;
  if (parts.time != nullptr) time = read_numbers(parts.time, ':');
  return store(*dt, date_of(date, dt->ymdFormat), time.number);
}
