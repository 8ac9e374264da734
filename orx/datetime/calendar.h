// Fields of the calendar and OLE Automation dates, by integer arithmetic alone. Internal to the library.
#pragma once

namespace orx::datetime {

struct Fields {
  int year = 1899;  // day 0
  int month = 12;
  int day = 30;
  int hour = 0;
  int minute = 0;
  int second = 0;
};

bool is_date(int year, int month, int day);

// False, with the output unchanged, for fields that make no date or time.
bool to_value(const Fields& fields, double& value);

// To the nearest second. False, with the output unchanged, for what lies outside the years 100 to 9999, or is
// no number.
bool to_fields(double value, Fields& fields);

// A year as the user writes it, below 100 completed by the two-digit pivot.
int completed_year(int year, int pivot);

}  // namespace orx::datetime
