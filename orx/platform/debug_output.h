// Lines for whoever debugs the process.
#pragma once

namespace orx::platform {

// Hands over the text as it is, and then a line feed; null and the empty text are ignored. Where the system
// has no such channel they go nowhere, unless the environment variable ORX_DEBUG_OUTPUT says "stderr" or
// names a file to append to.
void debug_output(const char* text);

}  // namespace orx::platform
