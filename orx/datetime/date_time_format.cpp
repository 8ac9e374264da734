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

// "00" to "99", since a number of two digits is copied faster than it is divided.
constexpr auto kPairs = [] {
  std::array<char, 200> pairs{};
  for (std::size_t i = 0; i < 100; ++i) {
    pairs[2 * i] = static_cast<char>('0' + i / 10);
    pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
  }
  return pairs;
}();

// Writes a text piece by piece. The C library's print would cost ten times as much.
class Writer {
 public:
  Writer& Put(char c) { return *end_++ = c, *this; }

  // At least two characters; a field that is no date is -1.
  Writer& Number(int number, char padding = '0') {
    if (number < 0) return Put('-').Put('1');
    if (number >= 1000) {
      Pair(number / 100);
    } else if (number >= 100) {
      Put(static_cast<char>('0' + number / 100));
    } else if (number < 10) {
      return Put(padding).Put(static_cast<char>('0' + number));
    }
    return Pair(number % 100);
  }

  Writer& Numbers(int a, int b, int c, char separator) {
    return Number(a).Put(separator).Number(b).Put(separator).Number(c);
  }

  void Long(double value) {
    // Beyond its range the conversion to an integer is not defined.
    constexpr double kLimit = 9223372036854774784.0;
    const auto whole = std::isnan(value) ? 0 : static_cast<std::int64_t>(std::clamp(value, -kLimit, kLimit));
    end_ = std::to_chars(end_, text_ + sizeof text_, whole).ptr;
  }

  void CopyTo(char* buffer, int size) const {
    const auto length = std::min(static_cast<std::size_t>(end_ - text_), static_cast<std::size_t>(size) - 1);
    std::memcpy(buffer, text_, length);
    buffer[length] = '\0';
  }

 private:
  Writer& Pair(int number) {
    std::memcpy(end_, kPairs.data() + 2 * number, 2);
    end_ += 2;
    return *this;
  }

  char text_[ORX_DATE_TEXT_SIZE - 1];  // a number of 64 bits is the longest, then a date and time
  char* end_ = text_;
};

struct Style {
  int order;
  bool is_short;      // two digits for the years that two digits can name
  char hour_padding;  // of a time alone
};

int written_year(int year, bool is_short) {
  const std::int64_t first = std::int64_t{orx::datetime::static_defaults.pivot} + 1900;
  return is_short && year >= first && year <= first + 99 ? year % 100 : year;
}

void put_date(Writer& text, int year, int month, int day, int order) {
  switch (order) {
    case orxMonthDayYear:
      text.Numbers(month, day, year, '/');
      break;
    case orxDayMonthYear:
      text.Numbers(day, month, year, '/');
      break;
    default:
      text.Numbers(year, month, day, '/');
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
      text.Long(dt->value);
      break;
    case orxDateTimeFull:
      put_date(text, written_year(year, style.is_short), month, day, style.order);
      text.Put(' ').Numbers(hour, minute, second, ':');
      break;
    case orxDateTimeDate:
      put_date(text, written_year(year, style.is_short), month, day, style.order);
      break;
    case orxDateTimeTime:
      text.Number(hour, style.hour_padding).Put(':').Number(minute).Put(':').Number(second);
      break;
    default:
      return 0;
  }
  text.CopyTo(buffer, size);
  return 0;
}

}  // namespace

int orxDateTime_FormatString(const orxDateTime* dt, char* buf, int size) {
  const int order = dt != nullptr ? dt->ymdFormat : 0;
  return format(dt, buf, size, {order, !orx::datetime::static_defaults.four_digit_years, '0'});
}

int orxDateTime_FormatSpecialFullLengthString(const orxDateTime* dt, char* buf, int size) {
  return format(dt, buf, size, {orxYearMonthDay, false, ' '});
}
