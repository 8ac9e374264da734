#include <orx/platform/posix/quiet_write.h>

#include <signal.h>
#include <unistd.h>

#include <cerrno>

namespace orx::platform {
namespace {

int signal_of(int error) {
  if (error == EFBIG) return SIGXFSZ;
  return error == EPIPE ? SIGPIPE : 0;
}

// Both signals go to the thread that writes, so one that was blocked before it and waits after it is ours,
// unless one waited already.
void consume(int signal) {
  sigset_t one;
  sigemptyset(&one);
  sigaddset(&one, signal);
  constexpr timespec kNoWait = {};
  while (sigtimedwait(&one, nullptr, &kNoWait) < 0 && errno == EINTR) {
  }
}

}  // namespace

ssize_t quiet_write(int file, const void* bytes, std::size_t size) {
  sigset_t blocked, mask, waiting;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGXFSZ);
  sigaddset(&blocked, SIGPIPE);
  pthread_sigmask(SIG_BLOCK, &blocked, &mask);
  sigpending(&waiting);

  const ssize_t written = write(file, bytes, size);
  const int error = written < 0 ? errno : 0;
  if (const int signal = signal_of(error); signal != 0 && sigismember(&waiting, signal) == 0) consume(signal);

  pthread_sigmask(SIG_SETMASK, &mask, nullptr);
  if (error != 0) errno = error;
  return written;
}

}  // namespace orx::platform
