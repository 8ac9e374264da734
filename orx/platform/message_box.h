// The only dialogue of the library.
#pragma once

namespace orx::platform {

// Shows an error message with an OK button in front of the active window, and blocks until the user dismisses
// it. Where there is no window system, writes the line "CAPTION: TEXT" to the standard error stream and
// returns. Neither text is null.
void show_error_box(const char* text, const char* caption);

}  // namespace orx::platform
