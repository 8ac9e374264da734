#include <orx/platform/paths.h>

#include <orx/platform/kept_errno.h>
#include <orx/platform/posix/environment.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace orx::platform {
namespace {

bool is_letter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

char lower(char letter) { return static_cast<char>(letter | 0x20); }

bool has_drive(const char* path) { return is_letter(path[0]) && path[1] == ':'; }

bool is_separator(char c) { return c == '\\' || c == '/'; }

bool has_server(const char* path) {
  return path[0] == '\\' && path[1] == '\\' && path[2] != '\0' && !is_separator(path[2]);
}

// Empty when there is none.
std::string drive_folder() {
  if (std::string folder = variable("ORX_DRIVES"); !folder.empty()) return folder;
  const std::string data = user_folder("XDG_DATA_HOME", ".local/share");
  return data.empty() ? data : data + "/orx/drives";
}

std::string in_drive_folder(const std::string& folder, const char* rest) {
  const std::string drives = drive_folder();
  if (drives.empty()) return drives;
  const bool separated = *rest == '\0' || is_separator(*rest);
  return drives + '/' + folder + (separated ? "" : "/") + rest;
}

// Without "." and "..": what stands before a ".." may be a link, so that only the system can tell where it
// leads.
std::filesystem::path plain(const std::filesystem::path& path) {
  std::error_code error;
  if (std::find(path.begin(), path.end(), "..") != path.end()) {
    const std::filesystem::path resolved = std::filesystem::weakly_canonical(path, error);
    if (!error) return resolved;
  }
  return path.lexically_normal();
}

}  // namespace

std::string system_path(const char* path) {
  const KeptErrno kept;
  std::string result;
  if (path == nullptr) return result;
  if (has_drive(path)) {
    result = in_drive_folder({lower(path[0])}, path + 2);
  } else if (has_server(path)) {
    result = in_drive_folder("unc", path + 1);
  } else {
    result = path;
  }
  std::ranges::replace(result, '\\', '/');
  return result;
}

std::string suite_path(const char* native) {
  const KeptErrno kept;
  if (native == nullptr || *native == '\0') return "";
  if (*native == '\\' || has_drive(native)) return native;
  std::error_code error;
  const std::filesystem::path absolute = std::filesystem::absolute(native, error);
  if (error) return "";  // the current directory is gone
  std::string result = plain(absolute).string();
  if (result.size() > 1 && result.ends_with('/')) result.pop_back();
  std::ranges::replace(result, '/', '\\');
  return result;
}

// Not kept: a host may set it until the application data folder is found.
std::string public_folder() {
  const char* folder = secure_getenv("PUBLIC");
  return folder != nullptr ? folder : "";
}

}  // namespace orx::platform
