// The command line.
#pragma once

#include <ostream>
#include <stdexcept>

#include "commands.h"

namespace orx::cli {

class UsageError : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The command that was asked for, with `arguments` filled in; or null when the command line asked for a text
// that is already written to `out` (--help, --version). Raises UsageError.
Command parse(int argc, const char* const* argv, Arguments& arguments, std::ostream& out);

}  // namespace orx::cli
