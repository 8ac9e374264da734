// The system's errors.
#pragma once

#include <string>

namespace orx::platform {

// A short phrase ("No space left on device"), not translated, whatever the locale; safe in any thread.
std::string error_text(int error);

}  // namespace orx::platform
