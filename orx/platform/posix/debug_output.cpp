#include <orx/platform/debug_output.h>

#include <orx/base/errno_guard.h>
#include <orx/platform/posix/environment.h>
#include <orx/platform/posix/support/cancellation_block.h>
#include <orx/platform/posix/support/signal_block.h>

#include <fcntl.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cstring>
#include <new>

namespace orx::platform {
namespace {

// One system call, so that lines of several processes are not mixed. A pipe whose reader has gone fails
// without a signal, and that failure is ignored.
void write_line(int file, const char* text) {
  const SignalBlock signal_block;
  char line_end = '\n';
  const iovec pieces[] = {{const_cast<char*>(text), std::strlen(text)}, {&line_end, 1}};
  [[maybe_unused]] const ssize_t ignored = writev(file, pieces, 2);
}

// "stderr", the name of a file, or empty. The text is never freed.
const char* destination() {
  try {
    return environment_variable(Variable::kDebugOutput).c_str();
  } catch (const std::bad_alloc&) {
    return "";
  }
}

}  // namespace

void debug_output(const char* text) {
  const ErrnoGuard errno_guard;
  const CancellationBlock cancellation_block;
  if (text == nullptr || *text == '\0') return;
  const char* const where = destination();
  if (*where == '\0') return;
  if (std::strcmp(where, "stderr") == 0) return write_line(STDERR_FILENO, text);
  // O_NONBLOCK: a pipe that nobody reads must not stop the host.
  constexpr int kFlags = O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
  const int file = open(where, kFlags, 0666);
  if (file < 0) return;
  write_line(file, text);
  close(file);
}

}  // namespace orx::platform
