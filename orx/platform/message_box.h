// The one dialogue of the library.
#pragma once

namespace orx::platform {

// Shows an error with an OK button before the active window and waits until it is dismissed; where there is
// no window system, writes one line to the standard error stream.
void show_error_box(const char* text, const char* caption);

}  // namespace orx::platform
