// The stack of the calling thread.
#pragma once

#include <cstddef>

namespace orx::platform {

// The bytes between the current position and the lowest address that is reserved for the thread's stack,
// guard pages included. 0 when the system does not say, and on a stack that the thread was not created with:
// that of a coroutine or of a signal handler. Does not block.
std::size_t stack_left();

}  // namespace orx::platform
