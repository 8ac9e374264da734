#include <orx/platform/paths.h>

#include <orx/base/ascii.h>
#include <orx/base/errno_guard.h>
#include <orx/platform/posix/drive_path.h>
#include <orx/platform/posix/environment.h>

#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace orx::platform {
namespace {

bool has_drive(const char* path) { return is_letter(path[0]) && path[1] == ':'; }

bool is_separator(char c) { return c == '\\' || c == '/'; }

bool names_server(const char* path) {
  return is_separator(path[0]) && is_separator(path[1]) && path[2] != '\0' && !is_separator(path[2]);
}

// Empty when no variable names it and the user has no home folder.
std::string drive_folder() {
  if (std::string folder = environment_variable(Variable::kDrives); !folder.empty()) return folder;
  const std::string data = user_folder(Variable::kXdgDataHome, ".local/share");
  return data.empty() ? data : data + "/orx/drives";
}

// The path of `rest` in one folder of the drive folder. Empty when there is no drive folder.
SystemPath make_drive_path(const std::string& folder, const char* rest) {
  std::string drives = drive_folder();
  if (drives.empty()) return {};
  const std::size_t length = drives.size();
  const bool separated = *rest == '\0' || is_separator(*rest);
  drives.append("/").append(folder).append(separated ? "" : "/").append(rest);
  return {std::move(drives), length};
}

// Whether a path begins with a server. Two backslashes always mean a server. Two slashes do so only if the
// drive folder has that server, because paths of the system that programs put together from parts often begin
// with two slashes.
bool has_server(const char* path) {
  if (!names_server(path)) return false;
  if (path[0] == '\\' && path[1] == '\\') return true;
  const std::string server(path + 2, std::strcspn(path + 2, "\\/"));
  SystemPath folder = make_drive_path("unc", ("/" + server).c_str());
  struct stat status;
  if (folder.name.empty()) return false;
  return on_path(folder, [&](const char* name) { return stat(name, &status); }) == 0;
}

// Returns the path after the prefix \\?\, which Windows programs write to keep Windows from changing a path.
// The prefix before a server is \\?\UNC\. Its last backslash stays, since a server's path begins with it.
const char* skip_prefix(const char* path, bool& is_server) {
  constexpr std::string_view kPrefix = "\\\\?\\";
  constexpr std::string_view kServer = "UNC\\";
  is_server = false;
  if (!std::string_view(path).starts_with(kPrefix)) return path;
  path += kPrefix.size();
  is_server = strncasecmp(path, kServer.data(), kServer.size()) == 0;
  return is_server ? path + kServer.size() - 1 : path;
}

// Removes "." and "..". If the part before a ".." is a link, the ".." is in the link's target, so the path is
// resolved by the system; without a ".." links stay.
std::filesystem::path remove_dots(const std::filesystem::path& path) {
  std::error_code error;
  if (std::find(path.begin(), path.end(), "..") != path.end()) {
    const std::filesystem::path resolved = std::filesystem::weakly_canonical(path, error);
    if (!error) return resolved;
  }
  return path.lexically_normal();
}

}  // namespace

SystemPath parse_path(const char* path) {
  SystemPath result;
  if (path == nullptr) return result;
  bool is_server = false;
  path = skip_prefix(path, is_server);
  if (is_server) {
    result = make_drive_path("unc", path);
  } else if (has_drive(path)) {
    result = make_drive_path({to_lower(path[0])}, path + 2);
  } else if (has_server(path)) {
    result = make_drive_path("unc", path + 1);
  } else {
    result.name = path;
  }
  std::ranges::replace(result.name, '\\', '/');
  return result;
}

std::string system_path(const char* path) {
  const ErrnoGuard errno_guard;
  return parse_path(path).name;
}

std::string existing_path(const char* path) {
  const ErrnoGuard errno_guard;
  SystemPath result = parse_path(path);
  struct stat status;
  on_path(result, [&](const char* name) { return lstat(name, &status); });
  return result.name;
}

std::string suite_path(const char* native) {
  const ErrnoGuard errno_guard;
  if (native == nullptr || *native == '\0') return "";
  if (*native == '\\' || has_drive(native)) return native;
  if (has_server(native)) {
    std::string path = native;
    std::ranges::replace(path, '/', '\\');
    return path;
  }
  std::error_code error;
  const std::filesystem::path absolute = std::filesystem::absolute(native, error);
  if (error) return "";  // the current directory is gone
  std::string result = remove_dots(absolute).string();
  if (result.size() > 1 && result.ends_with('/')) result.pop_back();
  std::ranges::replace(result, '/', '\\');
  return result;
}

// Unlike the other variables, PUBLIC is read at every call: a host may set it before the application data
// folder is found.
std::string public_folder() {
  const char* folder = secure_getenv("PUBLIC");
  return folder != nullptr ? folder : "";
}

}  // namespace orx::platform
