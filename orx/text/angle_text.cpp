#include <orx/text/angle_text.h>

#include <orx/base/number_text.h>
#include <orx/text/strings.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <numbers>
#include <string_view>
#include <utility>

namespace {

constexpr double kPi = std::numbers::pi;
constexpr std::ptrdiff_t kLongestText = ORX_ANGLE_TEXT_SIZE - 1;
constexpr double kLargeInteger = 1e15;

// A fraction that reaches its threshold counts as the next whole unit, so that no text shows 60 minutes or 60
// seconds. The first two make up for rounding errors of the fraction.
constexpr double kAlmostOneDegree = 0.99999999999999;
constexpr double kAlmostOneSecond = 0.9999999999;
constexpr double kAlmostSixtySeconds = 59.995;     // two decimals would print 60.00
constexpr double kAlmostSixtyMinutes = 59.999995;  // five decimals would print 60.00000

// With several columns, the first is whole degrees and the second of three is whole minutes.
struct Notation {
  double half_turn;  // the value of 180 degrees in the unit of the notation
  int columns;       // 0: the notation has no text
  int width;         // of the last column
  int decimals;      // of the last column
};

constexpr std::ptrdiff_t kDegreesWidth = 4;
constexpr std::ptrdiff_t kMinutesWidth = 2;

// Indexed by the mode, from zelDegrees on.
constexpr Notation kNotations[] = {
    {180, 1, 12, 8},  // zelDegrees
    {180, 3, 2, 0},   // zelDegreesMinutesSeconds
    {180, 2, 8, 5},   // zelDegreesDecimalMinutes
    {kPi, 1, 12, 8},  // zelRadians
    {200, 1, 12, 8},  // zelGrads
    {0, 0, 0, 0},     // zelNoAngle
    {180, 3, 5, 2},   // zelDegreesMinutesDecimalSeconds
};
constexpr const Notation& kNoNotation = kNotations[zelNoAngle - zelDegrees];

const Notation& notation_of(int mode) {
  const bool is_known = mode >= zelDegrees && mode <= zelDegreesMinutesDecimalSeconds;
  return is_known ? kNotations[mode - zelDegrees] : kNoNotation;
}

// Reads text with colons. A text that ends with a colon continues at `rest`.
double read_columns(const char* text, const char* rest, int columns) {
  const double degrees = orx::read_double(text);
  if (columns == 1) return degrees;  // not by way of the absolute value, which would lose the sign of -0
  double value = std::abs(degrees);
  double units_of_degree = 1;
  for (int column = 2; column <= columns; ++column) {
    const char* const colon = std::strchr(text, ':');
    if (colon == nullptr) break;
    text = colon + 1;
    if (*text == '\0') text = std::exchange(rest, "");
    units_of_degree *= 60;
    value += orx::read_double(text) / units_of_degree;
  }
  return degrees < 0 ? -value : value;
}

// Reads packed text. Only the columns before the last one need colons, so only these are copied; the text
// itself may be of any length.
double read_packed(int mode, const char* text, int columns) {
  char head[kDegreesWidth + kMinutesWidth + 3];
  ORX_strncpy(head, text, columns == 3 ? kDegreesWidth + kMinutesWidth : kDegreesWidth);
  const char* const rest = text + std::strlen(head);
  insert_colon_to_ang_str(mode, head);
  return read_columns(head, rest, columns);
}

struct Columns {
  double degrees, minutes, seconds;
};

// Splits a fraction of a degree into minutes and seconds: whole seconds are truncated, decimals are kept.
void split_seconds(double fraction, int decimals, Columns& split) {
  if (decimals == 0) {
    const double exact = fraction * 3600;
    double seconds = std::trunc(exact);
    if (exact - seconds > kAlmostOneSecond) ++seconds;
    split.minutes = std::trunc(seconds / 60);
    split.seconds = seconds - split.minutes * 60;
    return;
  }
  const double exact = fraction * 60;
  split.minutes = std::trunc(exact);
  split.seconds = (exact - split.minutes) * 60;
  if (split.seconds < kAlmostSixtySeconds) return;
  ++split.minutes;
  split.seconds = 0;
}

// Splits an angle that is not negative. The minutes may come out as 60, and then count as one more degree.
Columns split_degrees(double degrees, const Notation& notation) {
  Columns split{std::trunc(degrees), 0, 0};
  const double fraction = std::isfinite(degrees) ? degrees - split.degrees : 0;
  if (fraction > kAlmostOneDegree) {
    split.minutes = 60;
  } else if (notation.columns == 2) {
    const double minutes = fraction * 60;
    split.minutes = minutes < kAlmostSixtyMinutes ? minutes : 60;
  } else {
    split_seconds(fraction, notation.decimals, split);
  }
  if (split.minutes < 60) return split;
  ++split.degrees;
  split.minutes = 0;
  return split;
}

// Writes into a buffer of ORX_ANGLE_TEXT_SIZE bytes, and cuts what does not fit.
class Writer {
 public:
  explicit Writer(char* out) : out_(out), end_(out + kLongestText) {}

  // Writes the number as "%*.*f" does in the C locale. Without decimals the number is a whole one, infinite
  // or not a number.
  void Put(double number, std::ptrdiff_t width, int decimals) {
    char digits[336];  // the largest number has 309 digits, a sign and decimals
    // Integers are converted many times faster.
    const bool is_integer = decimals == 0 && std::abs(number) < kLargeInteger;
    const auto [end, error] =
        is_integer ? std::to_chars(digits, std::end(digits), static_cast<std::int64_t>(number))
                   : std::to_chars(digits, std::end(digits), number, std::chars_format::fixed, decimals);
    const std::ptrdiff_t length = end - digits;
    out_ = std::fill_n(out_, std::clamp<std::ptrdiff_t>(width - length, 0, end_ - out_), ' ');
    out_ = std::copy_n(digits, std::min(length, end_ - out_), out_);
  }

  void Put(std::string_view text) {
    const auto length = static_cast<std::ptrdiff_t>(text.size());
    out_ = std::copy_n(text.data(), std::min(length, end_ - out_), out_);
  }

  void Finish() { *out_ = '\0'; }

 private:
  char* out_;
  char* const end_;
};

void write_columns(double radians, const Notation& notation, std::string_view separator, Writer& writer) {
  const double angle = std::abs(radians) / kPi * notation.half_turn;
  const auto& [degrees, minutes, seconds] = split_degrees(angle, notation);
  writer.Put(radians < 0 ? -degrees : degrees, kDegreesWidth, 0);  // -0 is written as 0
  writer.Put(separator);
  double last_column = minutes;
  if (notation.columns == 3) {
    writer.Put(minutes, kMinutesWidth, 0);
    writer.Put(separator);
    last_column = seconds;
  }
  writer.Put(last_column, notation.width, notation.decimals);
}

}  // namespace

double zel_convert_str_to_ang(int mode, const char* text, int packed) {
  const Notation& notation = notation_of(mode);
  if (text == nullptr || notation.columns == 0) return 0;
  const bool needs_colons = packed == 1 && notation.columns > 1;
  const double value =
      needs_colons ? read_packed(mode, text, notation.columns) : read_columns(text, "", notation.columns);
  return notation.half_turn == kPi ? value : value / notation.half_turn * kPi;
}

char* zel_convert_ang_to_str(int mode, double radians, int packed, char* out) {
  if (out == nullptr) return out;
  const Notation& notation = notation_of(mode);
  Writer writer(out);
  if (notation.columns == 1) {
    const double value = notation.half_turn == kPi ? radians : radians / kPi * notation.half_turn;
    writer.Put(value, notation.width, notation.decimals);
  } else if (notation.columns > 1 && (packed == 0 || packed == 1)) {
    write_columns(radians, notation, packed == 0 ? ":" : "", writer);
  }
  writer.Finish();
  return out;
}

void insert_colon_to_ang_str(int mode, char* text) {
  const int columns = notation_of(mode).columns;
  if (columns == 3) inschar(text, ':', kDegreesWidth + kMinutesWidth);
  if (columns > 1) inschar(text, ':', kDegreesWidth);
}
