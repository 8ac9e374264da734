// Numbers as text, independent of the locale.
#pragma once

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>
#include <system_error>

namespace orx::cli {

// Returns false and leaves `number` unchanged unless the whole text is a number that fits the type.
template <class Number>
bool read_number(const std::string& text, Number& number) {
  Number read{};
  const char* const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, read);
  if (error != std::errc{} || rest != end) return false;
  number = read;
  return true;
}

// The shortest text that reads back as the same number.
template <class Number>
std::string shortest_text(Number number) {
  char text[64];
  return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

// The number with this many decimals. A result of zero has no minus.
inline std::string fixed_text(double number, int decimals) {
  char text[400];  // enough for the largest double with 64 decimals
  std::string written(
      text, std::to_chars(text, text + sizeof text, number, std::chars_format::fixed, decimals).ptr);
  const bool is_zero = written.find_first_of("123456789") == std::string::npos;
  return is_zero && written.starts_with('-') ? written.substr(1) : written;
}

// The number of decimals that show a value of this size, at most as many as a double has.
inline int decimals_for(double size) {
  return static_cast<int>(std::clamp(std::ceil(-std::log10(size) - 1e-9), 0.0, 15.0));
}

// The double with the same shortest text as `number`: 0.1 for the float 0.1f, not 0.10000000149.
template <class Number>
double double_of_digits(Number number) {
  double written = 0;
  read_number(shortest_text(number), written);
  return written;
}

}  // namespace orx::cli
