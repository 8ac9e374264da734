// Parsing of the command line.
#pragma once

#include <ostream>
#include <stdexcept>

#include "commands.h"

namespace orx::cli {

// Wrong arguments. The tool prints the message with a hint at --help.
class UsageError : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Returns the command with its arguments. Raises UsageError for a wrong command line. For --help and
// --version it writes the text to `out` and returns an empty command.
Command parse_command_line(int argc, const char* const* argv, std::ostream& out);

}  // namespace orx::cli
