#include <orx/platform/message_box.h>

#include <orx/base/errno_guard.h>

#include <cstdio>

namespace orx::platform {

// There is no window system to rely on, so the host's terminal gets the message.
void show_error_box(const char* text, const char* caption) {
  const ErrnoGuard errno_guard;
  std::fprintf(stderr, "%s: %s\n", caption, text);
}

}  // namespace orx::platform
