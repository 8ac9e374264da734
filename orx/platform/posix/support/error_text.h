// Texts for the system's errors.
#pragma once

#include <string>

namespace orx::platform {

// A short English phrase for a value of errno ("No space left on device"), the same in every locale. Any
// thread may call this.
std::string error_text(int error);

}  // namespace orx::platform
