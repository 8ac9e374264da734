#include <orx/compat/number_text.h>

#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <string_view>

namespace orx::compat {
namespace {

bool is_digit(char c) { return c >= '0' && c <= '9'; }

// Of a number beyond the range: whether it is too large, or too close to 0. Its decimal exponent is that of
// its first digit that is not 0, moved by the exponent that is written.
bool is_too_large(std::string_view number) {
  const std::size_t marker = number.find_first_of("eE");
  const std::string_view mantissa = number.substr(0, marker);
  double exponent = 0;
  if (marker != std::string_view::npos) {
    std::string_view written = number.substr(marker + 1);
    if (written.starts_with('+')) written.remove_prefix(1);
    std::from_chars(written.data(), written.data() + written.size(), exponent, std::chars_format::fixed);
  }
  const std::size_t point = std::min(mantissa.find('.'), mantissa.size());
  const std::size_t first = std::min(mantissa.find_first_not_of("0."), mantissa.size());
  return static_cast<double>(point) - static_cast<double>(first) + exponent > 0;
}

}  // namespace

double read_double(const char* text) {
  text += std::strspn(text, " \t\n\v\f\r");
  const bool is_negative = *text == '-';
  if (is_negative || *text == '+') ++text;
  if (!is_digit(*text) && !(*text == '.' && is_digit(text[1]))) return 0;
  double value = 0;
  const auto [end, error] = std::from_chars(text, text + std::strlen(text), value);
  if (error == std::errc::result_out_of_range) {
    const bool is_large = is_too_large({text, static_cast<std::size_t>(end - text)});
    value = is_large ? std::numeric_limits<double>::infinity() : 0;
  }
  return is_negative ? -value : value;
}

}  // namespace orx::compat
