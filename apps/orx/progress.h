// One line on standard error that shows the progress of long work. Nothing is shown during the first second,
// or when standard error is not a terminal.
#pragma once

#include <chrono>
#include <cstddef>

namespace orx::cli {

class Progress {
 public:
  Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress();  // clears the line

  // Shows that `done` of `all` items are done. Reads the clock, so call it once for many items.
  void Report(const char* work, std::size_t done, std::size_t all);

 private:
  using Clock = std::chrono::steady_clock;

  bool is_terminal_;
  bool is_shown_ = false;
  Clock::time_point next_;  // when the line is written again
};

}  // namespace orx::cli
