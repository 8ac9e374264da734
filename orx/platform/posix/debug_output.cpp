#include <orx/platform/debug_output.h>

#include <orx/platform/kept_errno.h>
#include <orx/platform/posix/quiet_write.h>

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace orx::platform {

void debug_output(const char* text) {
  const KeptErrno kept;
  const char* where = secure_getenv("ORX_DEBUG_OUTPUT");
  if (text == nullptr || *text == '\0' || where == nullptr || *where == '\0') return;
  const bool to_stderr = std::strcmp(where, "stderr") == 0;
  // Not blocking: a pipe that nobody reads must not stop the host.
  constexpr int kFlags = O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
  const int file = to_stderr ? STDERR_FILENO : open(where, kFlags, 0666);
  if (file < 0) return;
  // In one piece, so that the lines of several processes stay whole.
  quiet_write(file, text, std::strlen(text));
  if (!to_stderr) close(file);
}

}  // namespace orx::platform
