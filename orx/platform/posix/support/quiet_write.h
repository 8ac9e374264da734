// Writing without signals.
#pragma once

#include <sys/types.h>

#include <cstddef>

namespace orx::platform {

// As write(2), with the signals held that it may send, see signals_held.h.
ssize_t quiet_write(int file, const void* bytes, std::size_t size);

}  // namespace orx::platform
