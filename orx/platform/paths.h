// Paths of the suite and paths of the system.
//
// The suite writes paths with backslashes and drive letters, and stores them so in its files; the system may
// have neither. Narrow text. No function blocks.
#pragma once

#include <string>

namespace orx::platform {

// The system's path for a path of the suite: X:\..., \\server\share\..., both also with slashes or after
// \\?\, or any other path. A path that is the system's already comes back unchanged. Empty when there is no
// such path: an empty path, or a drive on a system where no drive folder can be found. Looks at a file only
// for a path that begins with two slashes.
std::string system_path(const char* path);

// The same, with each part of a path with a drive or server in the letter case in which it exists. A path
// that exists as written, or not at all, is converted as above.
std::string existing_path(const char* path);

// The suite's form of a path of the system, made absolute. A path that is in the suite's form already (it
// begins with a backslash or a drive) comes back unchanged; so does the empty one.
std::string suite_path(const char* native);

// The folder that all users of the machine share, as the system's variable for it has it; empty when that is
// not set.
std::string public_folder();

}  // namespace orx::platform
