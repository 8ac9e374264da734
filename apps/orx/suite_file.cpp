#include "suite_file.h"

#include <orx/frame/native_path.h>

#include <array>
#include <filesystem>
#include <system_error>

#include "failure.h"

namespace orx::cli {
namespace {

using PathBuffer = std::array<char, ORX_PATH_SIZE>;

Failure last_failure(const CProjectFile& document, const std::string& file) {
  CStringA reason;
  document.GetLastFailure(reason);
  return {file, reason.GetString()};
}

}  // namespace

std::string suite_path(const std::string& file) {
  PathBuffer path{};
  if (file.empty()) throw Failure("''", "a path cannot be empty");
  if (orx_path_from_native(file.c_str(), path.data(), path.size()) != 0) {
    throw Failure(file, "the path is too long");
  }
  return path.data();
}

std::string native_path(const std::string& file) {
  PathBuffer path{};
  if (orx_path_to_native(suite_path(file).c_str(), path.data(), path.size()) != 0) {
    throw Failure(file, "the path is too long, or its drive has no folder");
  }
  return path.data();
}

bool file_exists(const std::string& file) {
  std::error_code ignored;
  return std::filesystem::status(native_path(file), ignored).type() != std::filesystem::file_type::not_found;
}

void set_file(CProjectFile& document, const std::string& file) {
  const std::string path = suite_path(file);
  document.SetFileName(path.c_str());
  // The document trims the name, and would then use another file.
  if (document.GetFileName() != path) throw Failure(file, "the name of a file cannot end in white space");
}

void load(CProjectFile& document, const std::string& file) {
  set_file(document, file);
  if (document.Load() == 0) throw last_failure(document, file);
}

void save(CProjectFile& document, const std::string& file) {
  if (document.Save() == 0) throw last_failure(document, file);
}

}  // namespace orx::cli
