#include <orx/platform/posix/support/quiet_write.h>

#include <orx/platform/posix/support/signal_block.h>

#include <unistd.h>

namespace orx::platform {

ssize_t quiet_write(int file, const void* bytes, std::size_t size) {
  SignalBlock signal_block;
  const ssize_t written = write(file, bytes, size);
  // A complete write has raised no signal. That saves a system call for each write.
  if (written == static_cast<ssize_t>(size)) signal_block.SkipPendingCheck();
  return written;
}

}  // namespace orx::platform
