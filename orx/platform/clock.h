// The local date and time.
#pragma once

namespace orx::platform {

struct LocalTime {
  int year;    // in full, for example 2026
  int month;   // 1 to 12
  int day;     // 1 to 31
  int hour;    // 0 to 23
  int minute;  // 0 to 59
  int second;  // 0 to 59; a leap second is reported as 59
};

using Clock = LocalTime (*)();

// The current local date and time. Does not block. All fields are 0 if the system cannot convert the time.
LocalTime local_time();

// Replaces the clock that local_time reads, for tests; null restores the system's clock. Call it before other
// threads ask for the time.
void replace_clock(Clock clock);

// Duty of a backend: the system's clock, as local_time describes it.
LocalTime system_local_time();

}  // namespace orx::platform
