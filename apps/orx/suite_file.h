// Files named on the command line: by a path of the system or, as the suite writes them, with backslashes and
// drive letters. All raise Failure, which names the file as it was typed.
#pragma once

#include <orx/projects/project_file.h>

#include <string>

namespace orx::cli {

std::string suite_path(const std::string& file);

// As the system takes it.
std::string native_path(const std::string& file);

// True also when it cannot be told.
bool exists(const std::string& file);

// Names the file that `document` loads and saves.
void attach(CProjectFile& document, const std::string& file);
void load(CProjectFile& document, const std::string& file);
void save(CProjectFile& document, const std::string& file);

}  // namespace orx::cli
