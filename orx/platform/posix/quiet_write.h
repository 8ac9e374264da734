// Writing without signals.
#pragma once

#include <sys/types.h>

#include <cstddef>

namespace orx::platform {

// As write(2), but where the system also sends a signal that would end the host (the process's limit of file
// sizes, a pipe that nobody reads), there is only the error: EFBIG, EPIPE.
ssize_t quiet_write(int file, const void* bytes, std::size_t size);

}  // namespace orx::platform
