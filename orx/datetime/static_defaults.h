// The process-wide settings of dates, as the family itself reads them. Internal to the library.
#pragma once

#include <algorithm>
#include <cstdint>

namespace orx::datetime {

// An order or a kind as records hold it. Numbers beyond the range of the field stay unknown orders and kinds:
// they must not become others.
constexpr std::int16_t for_record(int number) {
  return static_cast<std::int16_t>(std::clamp<int>(number, INT16_MIN, INT16_MAX));
}

struct StaticDefaults {
  int order = 2;             // of new records
  int conversion_order = 2;  // of the conversions in one call
  int pivot = 30;
  bool four_digit_years = false;
};

extern StaticDefaults static_defaults;

// The full year of a year that may have two digits.
inline int completed_year(int year) {
  if (year >= 100) return year;
  return year + (year >= 0 && year < static_defaults.pivot ? 2000 : 1900);
}

}  // namespace orx::datetime
