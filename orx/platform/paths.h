// Paths of the suite and paths of the system.
//
// The suite writes paths with backslashes and drive letters, and stores them so in its files; the system may
// have neither. Narrow text; nothing here blocks or looks at files, but suite_path, which resolves ".."
// through links.
#pragma once

#include <string>

namespace orx::platform {

// The system's path for a path of the suite; a path that is the system's already comes back unchanged. Empty
// when there is none (an empty path, or a drive on a system where no drive folder can be found).
std::string system_path(const char* path);

// The suite's form of a path of the system, made absolute. A path that is in the suite's form already (it
// begins with a backslash or a drive) comes back unchanged; so does the empty one.
std::string suite_path(const char* native);

// The folder that all users of the machine share, as the system's variable for it has it; empty when that is
// not set.
std::string public_folder();

}  // namespace orx::platform
