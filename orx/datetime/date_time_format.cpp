#include <orx/datetime/date_time_format.h>

#include <orx/base/calendar.h>
#include <orx/datetime/static_defaults.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace {

using orx::calendar::Fields;

// The digits of 00 to 99. Copying a pair of digits is faster than computing two remainders.
constexpr auto kPairs = [] {
  std::array<char, 200> pairs{};
  for (std::size_t i = 0; i < 100; ++i) {
    pairs[2 * i] = static_cast<char>('0' + i / 10);
    pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
  }
  return pairs;
}();

// Appends to a text in a buffer of its own, which has space for the longest text. printf would take ten times
// as long.
class Writer {
 public:
  Writer& Put(char c) {
    *end_ = c;
    ++end_;
    return *this;
  }

  // Writes at least two characters. The only negative number is -1, the fields of a value that is not a date.
  Writer& PutNumber(int number, char padding = '0') {
    if (number < 0) return Put('-').Put('1');
    if (number >= 1000) {
      PutPair(number / 100);
    } else if (number >= 100) {
      Put(static_cast<char>('0' + number / 100));
    } else if (number < 10) {
      return Put(padding).Put(static_cast<char>('0' + number));
    }
    return PutPair(number % 100);
  }

  Writer& PutNumbers(int a, int b, int c, char separator) {
    return PutNumber(a).Put(separator).PutNumber(b).Put(separator).PutNumber(c);
  }

  // Writes the whole part of the value. A value beyond the range of 64 bits is written as the largest or
  // smallest double within it, since its conversion would be undefined.
  void PutWholePart(double value) {
    constexpr double kLimit = 9223372036854774784.0;
    if (std::isnan(value)) value = 0;
    const auto whole = static_cast<std::int64_t>(std::clamp(value, -kLimit, kLimit));
    end_ = std::to_chars(end_, text_ + sizeof text_, whole).ptr;
  }

  void CopyTo(char* buffer, int size) const {
    const auto capacity = static_cast<std::size_t>(size) - 1;
    const auto length = std::min(static_cast<std::size_t>(end_ - text_), capacity);
    std::memcpy(buffer, text_, length);
    buffer[length] = '\0';
  }

 private:
  Writer& PutPair(int number) {
    std::memcpy(end_, kPairs.data() + 2 * number, 2);
    end_ += 2;
    return *this;
  }

  char text_[ORX_DATE_TEXT_SIZE - 1];  // the longest text is a number of 64 bits
  char* end_ = text_;
};

struct Style {
  int order;
  bool has_short_years;
  char hour_padding;  // of records of a time alone
};

// The year as it is written. Short years are written with two digits from the year 1900 + pivot on, for a
// hundred years. Reading two digits gives one of the same years.
int written_year(int year, bool has_short_years) {
  const std::int64_t first = std::int64_t{orx::datetime::static_defaults.pivot} + 1900;
  const bool is_short = has_short_years && year >= first && year <= first + 99;
  return is_short ? year % 100 : year;
}

void put_date(Writer& text, int year, int month, int day, int order) {
  switch (order) {
    case orxMonthDayYear:
      text.PutNumbers(month, day, year, '/');
      break;
    case orxDayMonthYear:
      text.PutNumbers(day, month, year, '/');
      break;
    default:
      text.PutNumbers(year, month, day, '/');
  }
}

int format(const orxDateTime* dt, char* buffer, int size, const Style& style) {
  if (dt == nullptr || buffer == nullptr || size < 1) return 0;
  Fields fields{-1, -1, -1, -1, -1, -1};
  orx::calendar::to_fields(dt->value, fields);
  const auto& [year, month, day, hour, minute, second] = fields;
  Writer text;
  switch (dt->kind) {
    case orxDateTimeNumber:
      text.PutWholePart(dt->value);
      break;
    case orxDateTimeFull:
      put_date(text, written_year(year, style.has_short_years), month, day, style.order);
      text.Put(' ').PutNumbers(hour, minute, second, ':');
      break;
    case orxDateTimeDate:
      put_date(text, written_year(year, style.has_short_years), month, day, style.order);
      break;
    case orxDateTimeTime:
      text.PutNumber(hour, style.hour_padding).Put(':').PutNumber(minute).Put(':').PutNumber(second);
      break;
    default:
      return 0;
  }
  text.CopyTo(buffer, size);
  return 0;
}

}  // namespace

int orxDateTime_FormatString(const orxDateTime* dt, char* buf, int size) {
  int order = orxYearMonthDay;
  if (dt != nullptr) order = dt->ymdFormat;
  const bool has_short_years = !orx::datetime::static_defaults.four_digit_years;
  return format(dt, buf, size, {order, has_short_years, '0'});
}

int orxDateTime_FormatSpecialFullLengthString(const orxDateTime* dt, char* buf, int size) {
  return format(dt, buf, size, {orxYearMonthDay, false, ' '});
}
