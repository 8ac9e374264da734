// Reads and writes whole files. All functions raise Failure, which names the file as it was typed.
#pragma once

#include <string>

namespace orx::cli {

std::string read_file(const std::string& file);

// Writes the text to a temporary file in the same folder, which then replaces the file and keeps its
// permissions. A failure leaves the old file as it was. A link stays, and its target is replaced. A device or
// a pipe is written directly.
void replace_file(const std::string& file, const std::string& text);

}  // namespace orx::cli
