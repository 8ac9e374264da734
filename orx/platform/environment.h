// The environment variables that the backends read.
#pragma once

namespace orx::platform {

// Reads them again, where a backend keeps them. Other threads may be using the old values. Raises
// std::bad_alloc, and then keeps the old ones.
void read_environment();

}  // namespace orx::platform
