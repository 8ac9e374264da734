#include <orx/platform/posix/quiet_write.h>

#include <orx/platform/posix/signals_held.h>

#include <unistd.h>

namespace orx::platform {

ssize_t quiet_write(int file, const void* bytes, std::size_t size) {
  const SignalsHeld held;
  return write(file, bytes, size);
}

}  // namespace orx::platform
