// Numbers in texts, alike in every locale.
#pragma once

#include <charconv>
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

// The double that is written with the digits of the number, which may be a float.
template <class Number>
double as_written(Number number) {
  double written = 0;
  read_number(shortest(number), written);
  return written;
}

}  // namespace orx::cli
