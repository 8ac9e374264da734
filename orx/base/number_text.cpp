#include <orx/base/number_text.h>

#include <orx/base/ascii.h>
#include <orx/base/errno_guard.h>

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <memory>
#include <new>
#include <string_view>
#include <system_error>

namespace orx {
namespace {

// Of a number beyond the range: whether it is too large, or too close to 0. Its decimal exponent is that of
// its first digit that is not 0, moved by the exponent that is written.
bool is_too_large(std::string_view number) {
  const std::size_t marker = number.find_first_of("eE");
  const std::string_view mantissa = number.substr(0, marker);
  double exponent = 0;
  if (marker != std::string_view::npos) {
    std::string_view written = number.substr(marker + 1);
    if (written.starts_with('+')) written.remove_prefix(1);
    const auto [end, error] =
        std::from_chars(written.data(), written.data() + written.size(), exponent, std::chars_format::fixed);
    if (error != std::errc{}) return !written.starts_with('-');  // hundreds of digits outweigh any mantissa
  }
  const std::size_t point = std::min(mantissa.find('.'), mantissa.size());
  const std::size_t first = std::min(mantissa.find_first_not_of("0."), mantissa.size());
  return static_cast<double>(point) - static_cast<double>(first) + exponent > 0;
}

// A short number: its digits and the power of ten are exact, so that one division rounds it correctly. Nearly
// all are short. False for any other, and for what has an exponent.
bool read_short(const char* text, Number& number) {
  constexpr double kPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
  constexpr std::uint64_t kLargest = std::uint64_t{1} << std::numeric_limits<double>::digits;
  std::uint64_t digits = 0;
  std::size_t decimals = 0;
  const auto take_digits = [&] {
    const char* const first = text;
    for (; is_digit(*text) && digits < kLargest; ++text)
      digits = digits * 10 + static_cast<std::uint64_t>(*text - '0');
    return static_cast<std::size_t>(text - first);
  };
  take_digits();
  if (*text == '.') {
    ++text;
    decimals = take_digits();
  }
  const bool goes_on = is_digit(*text) || (*text | ' ') == 'e' || (*text | ' ') == 'd';
  if (goes_on || digits > kLargest || decimals >= std::size(kPowers)) return false;
  number = {static_cast<double>(digits) / kPowers[decimals], text};
  return true;
}

Number read_digits(const char* first, const char* last) {
  double value = 0;
  const auto [end, error] = std::from_chars(first, last, value);
  if (error == std::errc::result_out_of_range) {
    const bool is_large = is_too_large({first, static_cast<std::size_t>(end - first)});
    value = is_large ? std::numeric_limits<double>::infinity() : 0;
  }
  return {value, end};
}

// Fortran writes a D before the exponent. The number is read again with an E in its place, from a copy;
// without memory for that there is no exponent.
Number read_fortran(const char* first, const Number& mantissa) {
  const ErrnoGuard errno_guard;
  const char* const last = mantissa.end + 1 + std::strspn(mantissa.end + 1, "+-0123456789");
  const std::unique_ptr<char[]> copy(new (std::nothrow) char[static_cast<std::size_t>(last - first)]);
  if (copy == nullptr) return mantissa;
  char* const copy_end = std::copy(first, last, copy.get());
  copy[static_cast<std::size_t>(mantissa.end - first)] = 'e';
  const Number number = read_digits(copy.get(), copy_end);
  return {number.value, first + (number.end - copy.get())};
}

Number read_long(const char* text) {
  const Number number = read_digits(text, text + std::strlen(text));
  const bool has_exponent = std::any_of(text, number.end, [](char c) { return (c | ' ') == 'e'; });
  return (*number.end | ' ') == 'd' && !has_exponent ? read_fortran(text, number) : number;
}

const char* skip_space(const char* text) {
  while (is_space(*text)) ++text;
  return text;
}

}  // namespace

Number read_number(const char* text) {
  const char* first = skip_space(text);
  const bool is_negative = *first == '-';
  if (is_negative || *first == '+') ++first;
  if (!is_digit(*first) && !(*first == '.' && is_digit(first[1]))) return {0, text};
  Number number;
  if (!read_short(first, number)) number = read_long(first);
  if (is_negative) number.value = -number.value;
  return number;
}

std::int32_t read_int32(const char* text) {
  text = skip_space(text);
  if (*text == '+' && is_digit(text[1])) ++text;
  std::int32_t value = 0;
  const auto [end, error] = std::from_chars(text, text + std::strlen(text), value);
  if (error != std::errc::result_out_of_range) return value;
  return *text == '-' ? std::numeric_limits<std::int32_t>::min() : std::numeric_limits<std::int32_t>::max();
}

}  // namespace orx
