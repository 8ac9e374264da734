#include <orx/compat/number_text.h>

#include <orx/platform/kept_errno.h>

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <string_view>
#include <system_error>

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

struct Number {
  double value;
  const char* end;
};

Number read_digits(const char* first, const char* last) {
  double value = 0;
  const auto [end, error] = std::from_chars(first, last, value);
  if (error == std::errc::result_out_of_range) {
    const bool is_large = is_too_large({first, static_cast<std::size_t>(end - first)});
    value = is_large ? std::numeric_limits<double>::infinity() : 0;
  }
  return {value, end};
}

bool is_fortran_exponent(const char* number, const char* end) {
  return (*end == 'd' || *end == 'D') &&
         std::none_of(number, end, [](char c) { return c == 'e' || c == 'E'; });
}

// Reads again with an E in the place of the D. That takes a copy; without memory for it there is no exponent.
double read_fortran(const char* number, const Number& mantissa) {
  const platform::KeptErrno kept_errno;
  const char* const last = mantissa.end + 1 + std::strspn(mantissa.end + 1, "+-0123456789");
  const std::unique_ptr<char[]> copy(new (std::nothrow) char[static_cast<std::size_t>(last - number)]);
  if (copy == nullptr) return mantissa.value;
  char* const copy_end = std::copy(number, last, copy.get());
  copy[static_cast<std::size_t>(mantissa.end - number)] = 'e';
  return read_digits(copy.get(), copy_end).value;
}

const char* skip_space(const char* text) { return text + std::strspn(text, " \t\n\v\f\r"); }

}  // namespace

double read_double(const char* text) {
  text = skip_space(text);
  const bool is_negative = *text == '-';
  if (is_negative || *text == '+') ++text;
  if (!is_digit(*text) && !(*text == '.' && is_digit(text[1]))) return 0;
  const Number number = read_digits(text, text + std::strlen(text));
  const double value = is_fortran_exponent(text, number.end) ? read_fortran(text, number) : number.value;
  return is_negative ? -value : value;
}

std::int32_t read_int32(const char* text) {
  text = skip_space(text);
  if (*text == '+' && is_digit(text[1])) ++text;
  std::int32_t value = 0;
  const auto [end, error] = std::from_chars(text, text + std::strlen(text), value);
  if (error != std::errc::result_out_of_range) return value;
  return *text == '-' ? std::numeric_limits<std::int32_t>::min() : std::numeric_limits<std::int32_t>::max();
}

}  // namespace orx::compat
