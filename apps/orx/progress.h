// A line on standard error about work that takes long, when standard error is a terminal.
#pragma once

#include <chrono>
#include <cstddef>

namespace orx::cli {

class Progress {
 public:
  Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress();  // takes the line away

  // How much of the work is done. Costs too much to be called for every item.
  void tell(const char* work, std::size_t done, std::size_t all);

 private:
  using Clock = std::chrono::steady_clock;

  bool is_seen_;
  bool is_told_ = false;
  Clock::time_point next_;
};

}  // namespace orx::cli
