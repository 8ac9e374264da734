#include <orx/datetime/date_time_parse.h>

#include <orx/base/ascii.h>
#include <orx/base/number_text.h>
#include <orx/platform/clock.h>
#include <orx/platform/code_page.h>

#include <climits>
#include <cstring>

namespace {

using Numbers = int[3];

// Reads the digits at the beginning of the text and returns the text after them. A number that might not fit
// becomes INT_MAX, which no field of a date or time may be.
const char* read_digits(const char* text, int& number) {
  while (*text == '0') ++text;
  const char* const first = text;
  unsigned magnitude = 0;
  for (; orx::is_digit(*text); ++text) magnitude = magnitude * 10 + static_cast<unsigned>(*text - '0');
  number = text - first > 9 ? INT_MAX : static_cast<int>(magnitude);
  return text;
}

// Reads an integer after optional white space and an optional sign, and returns the text after it, or null if
// there is no integer.
const char* read_integer(const char* text, int& number) {
  if (orx::is_digit(*text)) return read_digits(text, number);  // the usual case
  while (orx::is_space(*text)) ++text;
  const bool is_negative = *text == '-';
  if (is_negative || *text == '+') ++text;
  if (!orx::is_digit(*text)) return nullptr;
  text = read_digits(text, number);
  if (is_negative) number = -number;
  return text;
}

// Reads up to three integers with separators between them, and returns their number.
int read_numbers(const char* text, char separator, Numbers& numbers) {
  int count = 0;
  while (true) {
    text = read_integer(text, numbers[count]);
    if (text == nullptr) return count;
    ++count;
    if (count == 3 || *text != separator) return count;
    ++text;
  }
}

struct Date {
  int year = 0;
  int month = 0;
  int day = 0;
};

// Where the date and the time begin in a text. Null: the text has no date, or no time.
struct Parts {
  const char* date;
  const char* time;
};

// Finds the date and the time. One of the two may begin at the other, which does no harm: reading stops at
// the first character that does not fit. Returns false for a text with "/" and ":" but no blank.
bool split(const char* text, Parts& parts) {
  bool has_slash = false, has_colon = false;
  const char* blank = text;
  for (;; ++blank) {
    if (orx::is_digit(*blank)) continue;  // the usual case
    if (*blank == ' ' || *blank == '\0') break;
    if (*blank == '/') has_slash = true;
    if (*blank == ':') has_colon = true;
  }
  if (*blank == '\0') {
    parts = has_slash ? Parts{text, nullptr} : Parts{nullptr, text};
    return !has_slash || !has_colon;
  }
  bool is_time_first = false;
  if (!has_slash && std::strchr(blank, '/') != nullptr) {
    is_time_first = has_colon || std::strchr(blank, ':') == nullptr;
  }
  parts = is_time_first ? Parts{blank, text} : Parts{text, blank};
  return true;
}

// The date of the numbers that were read. Missing fields are those of today. An unknown order gives the
// fields 0, which the calendar refuses.
Date date_of(const Numbers& numbers, int count, int order) {
  orx::platform::LocalTime today{};
  if (count < 3) today = orx::platform::local_time();
  const auto& [a, b, c] = numbers;
  if (count == 0) return {today.year, today.month, today.day};
  if (count == 1) return {today.year, today.month, a};
  if (count == 2) {
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

int store(orxDateTime& dt, const Date& date, const Numbers& time) {
  if (dt.kind == orxDateTimeTime) return orxDateTime_SetHourMinuteSecond(&dt, time[0], time[1], time[2]);
  return orxDateTime_SetYearMonthDayHourMinuteSecond(&dt, date.year, date.month, date.day, time[0], time[1],
                                                     time[2]);
}

int store_now(orxDateTime& dt) {
  const orx::platform::LocalTime now = orx::platform::local_time();
  const bool has_time = dt.kind == orxDateTimeFull || dt.kind == orxDateTimeTime;
  Numbers time{};
  if (has_time) {
    time[0] = now.hour;
    time[1] = now.minute;
    time[2] = now.second;
  }
  return store(dt, {now.year, now.month, now.day}, time);
}

}  // namespace

int orxDateTime_ParseString(orxDateTime* dt, const char* text) {
  if (text == nullptr) return 0;
  if (dt == nullptr) return ORX_DATE_INVALID;
  if (dt->kind == orxDateTimeNumber) {
    dt->value = orx::read_double(text);
    return 0;
  }
  if (*text == 'G' && std::strcmp(text, "GETDATE()") == 0) return store_now(*dt);

  Parts parts;
  if (!split(text, parts)) return ORX_DATE_NO_BLANK;
  Numbers date{}, time{};
  int count = 0;  // of the date
  if (parts.date != nullptr) {
    count = read_numbers(parts.date, '/', date);
    if (count == 0) return ORX_DATE_NO_NUMBER;
  }
  if (parts.time != nullptr) read_numbers(parts.time, ':', time);
  return store(*dt, date_of(date, count, dt->ymdFormat), time);
}
