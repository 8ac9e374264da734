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
#include <string_view>
#include <utility>

namespace {

constexpr double kPi = 3.141592653589793;
constexpr std::ptrdiff_t kLongestText = ORX_ANGLE_TEXT_SIZE - 1;
constexpr double kLargeInteger = 1e15;

// From these on, a text would show the next whole degree, second or minute.
constexpr double kAlmostOneDegree = 0.99999999999999;
constexpr double kAlmostOneSecond = 0.9999999999;
constexpr double kAlmostSixtySeconds = 59.995;     // of two decimals
constexpr double kAlmostSixtyMinutes = 59.999995;  // of five decimals

// The last column has the width and the decimals; before it come the whole degrees, then the whole minutes.
struct Notation {
  double half_turn;
  int columns;
  int width;
  int decimals;
};

constexpr std::ptrdiff_t kDegreesWidth = 4;
constexpr std::ptrdiff_t kMinutesWidth = 2;

constexpr Notation kNotations[] = {{180, 1, 12, 8}, {180, 3, 2, 0}, {180, 2, 8, 5}, {kPi, 1, 12, 8},
                                   {200, 1, 12, 8}, {0, 0, 0, 0},   {180, 3, 5, 2}};
constexpr const Notation& kNoNotation = kNotations[zelNoAngle - zelDegrees];

const Notation& notation_of(int mode) {
  const bool is_known = mode >= zelDegrees && mode <= zelDegreesMinutesDecimalSeconds;
  return is_known ? kNotations[mode - zelDegrees] : kNoNotation;
}

// The text goes on in `rest` where it ends with a colon.
double read_columns(const char* text, const char* rest, int columns) {
  const double degrees = orx::read_double(text);
  if (columns == 1) return degrees;  // -0 stays what it is
  double value = std::abs(degrees);
  double parts = 1;
  while (--columns > 0 && (text = std::strchr(text, ':')) != nullptr) {
    if (*++text == '\0') std::swap(text, rest);
    parts *= 60;
    value += orx::read_double(text) / parts;
  }
  return degrees < 0 ? -value : value;
}

// Only the columns before the last have to be copied to be given their colons.
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

// Writes as far as the longest text goes.
class Writer {
 public:
  explicit Writer(char* out) : out_(out), end_(out + kLongestText) {}

  // As "%*.*f" prints the number in the C locale; without decimals it is a whole one.
  void Put(double number, std::ptrdiff_t width, int decimals) {
    char digits[336];  // the largest number has 309, a sign and decimals
    // An integer takes a small part of the time.
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
  const auto& [degrees, minutes, seconds] =
      split_degrees(std::abs(radians) / kPi * notation.half_turn, notation);
  // Taken from 0, no degrees have no sign.
  writer.Put(radians < 0 ? 0 - degrees : degrees, kDegreesWidth, 0);
  writer.Put(separator);
  if (notation.columns == 3) {
    writer.Put(minutes, kMinutesWidth, 0);
    writer.Put(separator);
  }
  writer.Put(notation.columns == 3 ? seconds : minutes, notation.width, notation.decimals);
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
