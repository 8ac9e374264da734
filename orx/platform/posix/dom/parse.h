// Parses documents.
#pragma once

#include <orx/platform/posix/dom/tree.h>

#include <string>
#include <string_view>

namespace orx::platform::dom {

// The tree of a file or of a text, with a reference for the caller. Null with the reason after a failure. The
// encoding of a file is that of its byte order mark or declaration. A text is in the encoding of the process,
// whatever its declaration says.
Tree* parse_file(const char* path, std::string& reason);
Tree* parse_text(std::string_view text, std::string& reason);

}  // namespace orx::platform::dom
