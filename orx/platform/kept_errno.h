// The host's errno, which the library's own calls must not change.
#pragma once

#include <cerrno>

namespace orx::platform {

// Gives errno back at the end of the scope as it was at its beginning.
class KeptErrno {
 public:
  KeptErrno() = default;
  KeptErrno(const KeptErrno&) = delete;
  KeptErrno& operator=(const KeptErrno&) = delete;
  ~KeptErrno() { errno = value_; }

 private:
  int value_ = errno;
};

}  // namespace orx::platform
