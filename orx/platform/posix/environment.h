// What the environment says about the user, as it was when it was last read.
#pragma once

#include <string>

namespace orx::platform {

// One of the variables that the library keeps. Empty when it is not set, and in a program that runs with more
// rights than its user. The value is never freed. The first call reads them all and may raise std::bad_alloc.
const std::string& environment_variable(const char* name);

// The folder that an XDG variable names, otherwise the one below the user's home; relative names are ignored.
// Empty when there is neither.
std::string user_folder(const char* xdg_variable, const char* below_home);

}  // namespace orx::platform
