#include <orx/platform/posix/support/signal_block.h>

#include <orx/base/errno_guard.h>

#include <time.h>

#include <algorithm>

namespace orx::platform {
namespace {

constexpr int kSignals[] = {SIGXFSZ, SIGPIPE};

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
  pthread_sigmask(SIG_BLOCK, &blocked, &mask_);
  sigemptyset(&waiting_);
  // Signals that were let through until now cannot have waited.
  const auto was_blocked = [this](int signal) { return sigismember(&mask_, signal) == 1; };
  if (std::ranges::any_of(kSignals, was_blocked)) sigpending(&waiting_);
}

// Both signals go to the thread that writes, so what waits now and did not before is ours.
SignalBlock::~SignalBlock() {
  const ErrnoGuard errno_guard;
  sigset_t waiting;
  sigemptyset(&waiting);
  if (may_wait_) sigpending(&waiting);
  for (const int signal : kSignals) {
    if (sigismember(&waiting, signal) == 1 && sigismember(&waiting_, signal) == 0) consume(signal);
  }
  pthread_sigmask(SIG_SETMASK, &mask_, nullptr);
}

}  // namespace orx::platform
