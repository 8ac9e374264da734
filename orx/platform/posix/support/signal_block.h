// Writing without signals.
#pragma once

#include <signal.h>

namespace orx::platform {

// While it lives, a write of this thread that the system would also answer with a signal, which would end the
// host (the process's limit of file sizes, a pipe that nobody reads), only fails: EFBIG, EPIPE. Leaves errno
// alone.
class SignalBlock {
 public:
  SignalBlock();
  SignalBlock(const SignalBlock&) = delete;
  SignalBlock& operator=(const SignalBlock&) = delete;
  ~SignalBlock();

  // The caller knows that no signal was sent, and spares the look for one.
  void SkipPendingCheck() { may_wait_ = false; }

 private:
  sigset_t mask_;
  sigset_t waiting_;
  bool may_wait_ = true;
};

}  // namespace orx::platform
