// The stack of the calling thread.
#pragma once

#include <cstddef>

namespace orx::platform {

// Bytes from the current position down to the lowest address that is reserved for the thread's stack, guard
// pages included. 0 when that can't be told, and on a stack that is not the thread's own: that of a coroutine
// or of a signal handler. Does not block.
std::size_t stack_left();

}  // namespace orx::platform
