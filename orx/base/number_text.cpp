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

// Whether the character is the given lower-case letter or its capital, which differ in the bit of the blank.
bool is_letter_in_any_case(char c, char lower) { return (c | ' ') == lower; }

// Says why a number is out of range: true when it is too large, false when it is too close to 0. The position
// of its first digit other than 0 decides, together with the exponent that the text gives.
bool is_too_large(std::string_view number) {
  const std::size_t marker = number.find_first_of("eE");
  const std::string_view mantissa = number.substr(0, marker);
  double exponent = 0;
  if (marker != std::string_view::npos) {
    std::string_view digits = number.substr(marker + 1);
    if (digits.starts_with('+')) digits.remove_prefix(1);
    const char* const last = digits.data() + digits.size();
    const auto [end, error] = std::from_chars(digits.data(), last, exponent, std::chars_format::fixed);
    // An exponent of hundreds of digits outweighs any mantissa.
    if (error != std::errc{}) return !digits.starts_with('-');
  }
  const std::size_t point = std::min(mantissa.find('.'), mantissa.size());
  const std::size_t first_digit = std::min(mantissa.find_first_not_of("0."), mantissa.size());
  return static_cast<double>(point) - static_cast<double>(first_digit) + exponent > 0;
}

// The fast path: reads a number without an exponent whose digits, taken as an integer, are at most 2^53.
// These digits and the power of ten are exact doubles, so the one division rounds correctly. Returns false
// for every other number. `text` begins with a digit or a point.
bool read_short(const char* text, Number& number) {
  constexpr double kPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
  constexpr std::uint64_t kLargest = std::uint64_t{1} << std::numeric_limits<double>::digits;
  std::uint64_t digits = 0;
  std::size_t decimals = 0;
  const auto read_digits = [&] {
    const char* const first = text;
    for (; is_digit(*text) && digits < kLargest; ++text)
      digits = digits * 10 + static_cast<std::uint64_t>(*text - '0');
    return static_cast<std::size_t>(text - first);
  };
  read_digits();
  if (*text == '.') {
    ++text;
    decimals = read_digits();
  }
  const bool has_exponent = is_letter_in_any_case(*text, 'e') || is_letter_in_any_case(*text, 'd');
  if (is_digit(*text) || has_exponent || digits > kLargest || decimals >= std::size(kPowers)) return false;
  number = {static_cast<double>(digits) / kPowers[decimals], text};
  return true;
}

// Reads a number of any length, which from_chars recognises.
Number read_any(const char* first, const char* last) {
  double value = 0;
  const auto [end, error] = std::from_chars(first, last, value);
  if (error == std::errc::result_out_of_range) {
    const bool is_large = is_too_large({first, static_cast<std::size_t>(end - first)});
    value = is_large ? std::numeric_limits<double>::infinity() : 0;
  }
  return {value, end};
}

// Reads a number whose mantissa ends at a D. from_chars only knows E, so the number is read again from a copy
// with an E in place of the D. Without memory for the copy, the result is the mantissa alone.
Number read_fortran(const char* first, const Number& mantissa) {
  const ErrnoGuard errno_guard;
  const char* const last = mantissa.end + 1 + std::strspn(mantissa.end + 1, "+-0123456789");
  const std::unique_ptr<char[]> copy(new (std::nothrow) char[static_cast<std::size_t>(last - first)]);
  if (copy == nullptr) return mantissa;
  char* const copy_end = std::copy(first, last, copy.get());
  copy[static_cast<std::size_t>(mantissa.end - first)] = 'e';
  const Number number = read_any(copy.get(), copy_end);
  return {number.value, first + (number.end - copy.get())};
}

Number read_long(const char* text) {
  const Number number = read_any(text, text + std::strlen(text));
  if (!is_letter_in_any_case(*number.end, 'd')) return number;
  const auto is_e = [](char c) { return is_letter_in_any_case(c, 'e'); };
  const bool has_exponent = std::any_of(text, number.end, is_e);
  return has_exponent ? number : read_fortran(text, number);
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
  const char first_digit = *first == '.' ? first[1] : *first;
  if (!is_digit(first_digit)) return {0, text};
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
  if (error != std::errc::result_out_of_range) return value;  // 0 when the text is not a number
  return *text == '-' ? std::numeric_limits<std::int32_t>::min() : std::numeric_limits<std::int32_t>::max();
}

}  // namespace orx
