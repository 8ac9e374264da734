// Text for whoever debugs the process.
#pragma once

namespace orx::platform {

// Hands the text over as it is, without adding a line end; null is ignored. Where the system has no such
// channel it goes nowhere, unless the environment variable ORX_DEBUG_OUTPUT says "stderr" or names a file to
// append to.
void debug_output(const char* text);

}  // namespace orx::platform
