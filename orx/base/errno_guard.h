// Keeps the host's errno, which calls of the library must not change. Internal to the library.
#pragma once

#include <cerrno>

namespace orx {

// Restores errno at the end of the scope to its value at the beginning.
//
// Both accesses are volatile. Clang assumes that `new (std::nothrow)` leaves errno alone. It would read errno
// after the allocation, or would not write it back.
class ErrnoGuard {
 public:
  ErrnoGuard() = default;
  ErrnoGuard(const ErrnoGuard&) = delete;
  ErrnoGuard& operator=(const ErrnoGuard&) = delete;
  ~ErrnoGuard() { current() = value_; }

 private:
  static volatile int& current() { return errno; }

  int value_ = current();
};

}  // namespace orx
