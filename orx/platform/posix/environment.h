// What the environment says about the user.
#pragma once

#include <string>

namespace orx::platform {

// Empty when it is not set, and in a program that runs with more rights than its user.
std::string variable(const char* name);

// The folder that an XDG variable names, else the one below the user's home; relative names are ignored.
// Empty when there is neither.
std::string user_folder(const char* xdg_variable, const char* below_home);

}  // namespace orx::platform
