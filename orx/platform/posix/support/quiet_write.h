// A write that raises no signal.
#pragma once

#include <sys/types.h>

#include <cstddef>

namespace orx::platform {

// As write(2), but fails with EPIPE or EFBIG where write(2) would also raise a signal; see SignalBlock.
ssize_t quiet_write(int file, const void* bytes, std::size_t size);

}  // namespace orx::platform
