// The system's errors.
#pragma once

#include <cerrno>
#include <string>

namespace orx::platform {

// A short phrase ("No space left on device"), not translated, whatever the locale; safe in any thread.
std::string error_text(int error);

// Gives errno back as it was, so that the library's own calls do not show in the host.
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
