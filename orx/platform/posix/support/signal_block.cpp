#include <orx/platform/posix/support/signal_block.h>

#include <orx/base/errno_guard.h>

#include <time.h>

#include <algorithm>

namespace orx::platform {
namespace {

constexpr int kSignals[] = {SIGXFSZ, SIGPIPE};

// Removes a pending signal, which must be blocked.
void consume(int signal) {
  sigset_t one;
  sigemptyset(&one);
  sigaddset(&one, signal);
  constexpr timespec kNoWait = {};
  while (sigtimedwait(&one, nullptr, &kNoWait) < 0 && errno == EINTR) {
  }
}

}  // namespace

SignalBlock::SignalBlock() {
  sigset_t blocked;
  sigemptyset(&blocked);
  for (const int signal : kSignals) sigaddset(&blocked, signal);
  pthread_sigmask(SIG_BLOCK, &blocked, &host_mask_);
  sigemptyset(&pending_before_);
  // A signal that was not blocked cannot have been pending, so the system call is needed only rarely.
  const auto was_blocked = [this](int signal) { return sigismember(&host_mask_, signal) == 1; };
  if (std::ranges::any_of(kSignals, was_blocked)) sigpending(&pending_before_);
}

// The system sends both signals to the thread that writes. So a signal that is pending now and was not
// pending before comes from a write under this object, and the host must not get it.
SignalBlock::~SignalBlock() {
  const ErrnoGuard errno_guard;
  sigset_t pending;
  sigemptyset(&pending);
  if (may_be_pending_) sigpending(&pending);
  for (const int signal : kSignals) {
    const bool is_new = sigismember(&pending, signal) == 1 && sigismember(&pending_before_, signal) == 0;
    if (is_new) consume(signal);
  }
  pthread_sigmask(SIG_SETMASK, &host_mask_, nullptr);
}

}  // namespace orx::platform
