// Protection against the signals of failed writes.
#pragma once

#include <signal.h>

namespace orx::platform {

// While an object lives, a write of its thread raises no signal, which would end the host: a write beyond the
// process's limit for file sizes only fails with EFBIG, a write to a pipe without a reader only with EPIPE.
// Signals that the host had blocked and that were pending before stay pending. errno is left alone.
class SignalBlock {
 public:
  SignalBlock();
  SignalBlock(const SignalBlock&) = delete;
  SignalBlock& operator=(const SignalBlock&) = delete;
  ~SignalBlock();

  // For a caller that knows that its writes have raised no signal: the destructor need not look for one.
  void SkipPendingCheck() { may_be_pending_ = false; }

 private:
  sigset_t host_mask_;
  sigset_t pending_before_;
  bool may_be_pending_ = true;
};

}  // namespace orx::platform
