// Lets operator new (std::nothrow) run out of memory.
#pragma once

namespace orx::testing {

// The number of allocations that still succeed, initially INT_MAX.
extern int allocations_left;

}  // namespace orx::testing
