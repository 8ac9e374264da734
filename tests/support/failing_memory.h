// Memory that runs out when a test wants it to.
#pragma once

namespace orx::testing {

// How many allocations by the new that does not throw still succeed; as many as one likes at first.
extern int allocations_left;

}  // namespace orx::testing
