// Files named on the command line, by a path of the system or by a path of the suite, with backslashes and
// drive letters. All functions raise Failure, which names the file as it was typed.
#pragma once

#include <orx/projects/project_file.h>

#include <string>

namespace orx::cli {

// The path as the suite writes it.
std::string suite_path(const std::string& file);

// The path as the system takes it.
std::string native_path(const std::string& file);

// True unless the file is known to be missing: a file that cannot be examined must not be overwritten.
bool file_exists(const std::string& file);

// Sets the name of the file that `document` loads and saves.
void set_file(CProjectFile& document, const std::string& file);
void load(CProjectFile& document, const std::string& file);
void save(CProjectFile& document, const std::string& file);

}  // namespace orx::cli
