// Numbers in texts, alike in every locale.
#pragma once

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>
#include <system_error>

namespace orx::cli {

// False, with the number unchanged, unless the whole text is a number that fits.
template <class Number>
bool read_number(const std::string& text, Number& number) {
  Number read{};
  const char* const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, read);
  if (error != std::errc{} || rest != end) return false;
  number = read;
  return true;
}

// In the fewest digits that read back as the same number.
template <class Number>
std::string shortest(Number number) {
  char text[64];
  return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

// With so many decimals, and never as -0.
inline std::string fixed(double number, int decimals) {
  char text[400];  // enough for the largest double with 64 decimals
  std::string written(
      text, std::to_chars(text, text + sizeof text, number, std::chars_format::fixed, decimals).ptr);
  const bool is_zero = written.find_first_of("123456789") == std::string::npos;
  return is_zero && written.starts_with('-') ? written.substr(1) : written;
}

// How many show a number of this size, and no more than a double has.
inline int decimals_of(double size) {
  return static_cast<int>(std::clamp(std::ceil(-std::log10(size) - 1e-9), 0.0, 15.0));
}

// The double that is written with the digits of the number, which may be a float.
template <class Number>
double as_written(Number number) {
  double written = 0;
  read_number(shortest(number), written);
  return written;
}

}  // namespace orx::cli
