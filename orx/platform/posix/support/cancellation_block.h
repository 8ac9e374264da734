// Calls that pthread_cancel does not interrupt.
#pragma once

#include <pthread.h>

namespace orx::platform {

// While it lives, a cancellation of the thread waits. A call that was cut short would keep its locks and
// files, and could not unwind through the code of other libraries.
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
