// The environment variables that the backends read.
#pragma once

namespace orx::platform {

// Reads the variables again where a backend keeps their values; does nothing where it does not. Other threads
// may still be using the old values. Raises std::bad_alloc, and then the old values stay.
void read_environment();

}  // namespace orx::platform
