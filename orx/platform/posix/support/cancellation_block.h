// Protection against pthread_cancel.
#pragma once

#include <pthread.h>

namespace orx::platform {

// While an object lives, a cancellation of its thread is delayed. Without it, a cancelled system call would
// unwind the thread through code that does not expect it, and leave locks and open files behind.
class CancellationBlock {
 public:
  CancellationBlock() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &state_); }
  CancellationBlock(const CancellationBlock&) = delete;
  CancellationBlock& operator=(const CancellationBlock&) = delete;
  ~CancellationBlock() { pthread_setcancelstate(state_, &state_); }

 private:
  int state_ = PTHREAD_CANCEL_ENABLE;
};

}  // namespace orx::platform
