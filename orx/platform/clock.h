// The clock on the wall.
#pragma once

namespace orx::platform {

struct LocalTime {
  int year;  // in full
  int month;
  int day;
  int hour;
  int minute;
  int second;  // a leap second is the 59th once more
};

using Clock = LocalTime (*)();

// The current local date and time to the second. Does not block; one that cannot be had is all 0.
LocalTime local_time();

// Puts another clock in the place of the system's, for tests; null puts the system's back.
void replace_clock(Clock clock);

// What a backend provides.
LocalTime system_local_time();

}  // namespace orx::platform
