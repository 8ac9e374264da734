// The process-wide settings of dates (date_defaults.h), as the date functions read them. Internal to the
// library.
#pragma once

#include <algorithm>
#include <cstdint>

namespace orx::datetime {

// An order or a kind as a field of a record. A number beyond the range of the field is clamped, since a
// conversion could turn an unknown order or kind into a known one.
constexpr std::int16_t to_record_field(int number) {
  return static_cast<std::int16_t>(std::clamp<int>(number, INT16_MIN, INT16_MAX));
}

struct StaticDefaults {
  int order = 2;             // of new records
  int conversion_order = 2;  // of the orxutil functions
  int pivot = 30;            // two digits name the years from 1900 + pivot to 1999 + pivot
  bool four_digit_years = false;
};

extern StaticDefaults static_defaults;

// The full year of a year that may have two digits.
inline int complete_year(int year) {
  if (year >= 100) return year;
  const bool is_before_pivot = year >= 0 && year < static_defaults.pivot;
  return year + (is_before_pivot ? 2000 : 1900);
}

}  // namespace orx::datetime
