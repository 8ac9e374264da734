// The command line.
#pragma once

#include <ostream>
#include <stdexcept>

#include "commands.h"

namespace orx::cli {

class UsageError : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Returns the command with its arguments. Returns an empty command when the command line asked only for
// --help or
// --version; that text is then already written to `out`. Raises UsageError.
Command parse(int argc, const char* const* argv, std::ostream& out);

}  // namespace orx::cli
