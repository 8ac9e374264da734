// Files read and written at once. Raises Failure, which names the file as it was typed.
#pragma once

#include <string>

namespace orx::cli {

std::string read_file(const std::string& file);

// A failure leaves the file as it was: the text goes into a temporary file beside it, which takes its place
// and its permissions. A link leads to the file that is replaced. A device or a pipe is written to.
void replace_file(const std::string& file, const std::string& text);

}  // namespace orx::cli
