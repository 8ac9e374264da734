// Compiler built-ins. Internal to the library.
#pragma once

namespace orx {

// Fetches the cache line at `address` ahead of a read. An invalid address is harmless. Always inlined: GCC
// drops calls of functions that only prefetch, since they have no effect on values.
[[gnu::always_inline]] inline void prefetch(const void* address) { __builtin_prefetch(address); }

// The address of the stack frame of the function that calls this one.
[[gnu::always_inline]] inline const void* frame_address() { return __builtin_frame_address(0); }

}  // namespace orx
