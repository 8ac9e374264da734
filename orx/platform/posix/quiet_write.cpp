#include <orx/platform/posix/quiet_write.h>

#include <orx/platform/posix/signals_held.h>

#include <unistd.h>

namespace orx::platform {

ssize_t quiet_write(int file, const void* bytes, std::size_t size) {
  SignalsHeld held;
  const ssize_t written = write(file, bytes, size);
  if (written == static_cast<ssize_t>(size)) held.NoneSent();
  return written;
}

}  // namespace orx::platform
