// Conversion between paths of the suite and paths of the system.
//
// The suite writes paths with backslashes and drive letters, and stores them like that in its files. A system
// may have neither. All text is narrow. Null is the empty path. No function blocks, except for the time that
// the system needs to look up a name.
#pragma once

#include <string>

namespace orx::platform {

// The system's path for a path of the suite: X:\..., \\server\share\..., either of them with slashes or after
// \\?\, or any other path. A path of the system is returned unchanged. The result is empty for an empty path,
// and for a path with a drive or a server where no drive folder can be found. The file system is queried only
// for a path that begins with two slashes.
std::string system_path(const char* path);

// As system_path, but each part below a drive or a server gets the letter case in which it exists. A path
// that exists as written keeps its letter case; parts that do not exist in any case stay as written.
std::string existing_path(const char* path);

// The suite's form of a path of the system, made absolute. A path that begins with a backslash or a drive has
// the suite's form already and is returned unchanged. The result is empty for an empty path, and for a
// relative path when the current directory does not exist any more.
std::string suite_path(const char* native);

// The folder that all users of the machine share, unchanged from the environment variable PUBLIC; empty when
// it is not set. Read at every call.
std::string public_folder();

}  // namespace orx::platform
