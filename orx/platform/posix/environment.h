// The environment variables of the library, with the values that they had when they were last read.
#pragma once

#include <string>

namespace orx::platform {

enum class Variable {
  kDrives,
  kUserRegistry,
  kMachineRegistry,
  kDebugOutput,
  kHome,
  kXdgConfigHome,
  kXdgDataHome
};

// The value of a variable. Empty when the variable is not set, and in a
// program that runs with more rights than its user. The reference is valid until the process ends. The first
// call reads all variables and may raise std::bad_alloc.
const std::string& environment_variable(Variable variable);

// The folder that an XDG variable names if its value is absolute; otherwise the folder `below_home` in the
// user's home folder. Empty when there is no home folder either. May raise std::bad_alloc.
std::string user_folder(Variable xdg_variable, const char* below_home);

}  // namespace orx::platform
