// From bytes to a tree.
#pragma once

#include <orx/platform/posix/dom/tree.h>

#include <string>
#include <string_view>

namespace orx::platform::dom {

// The tree of a file of the system, or of a text of the process's encoding, whatever encoding its declaration
// says; with a reference of the caller, or null with the reason.
Tree* parse_file(const char* path, std::string& reason);
Tree* parse_text(std::string_view text, std::string& reason);

}  // namespace orx::platform::dom
