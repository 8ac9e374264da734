// The process-wide settings of dates, as the family itself reads them. Internal to the library.
#pragma once

namespace orx::datetime {

struct StaticDefaults {
  int order = 2;             // of new records
  int conversion_order = 2;  // of the conversions in one call
  int pivot = 30;
  bool four_digit_years = false;
};

extern StaticDefaults static_defaults;

}  // namespace orx::datetime
