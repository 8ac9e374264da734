// Messages for a developer who debugs the process.
#pragma once

namespace orx::platform {

// Writes the text unchanged, followed by a line feed, in one piece. Null and the empty text are ignored.
//
// On Windows the text goes to the debugger. On POSIX it goes where the environment variable ORX_DEBUG_OUTPUT
// says: "stderr", or the name of a file to append to. Without the variable the text is dropped. A file or a
// pipe is opened without waiting, and failures are ignored. Any thread may call this.
void debug_output(const char* text);

}  // namespace orx::platform
