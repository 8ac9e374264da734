#include <orx/platform/posix/registry/place.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace orx::platform {
namespace {

// Creates one folder, with a mode that does not depend on the umask. A folder that exists keeps its mode.
bool make_folder(const std::string& path, mode_t mode) {
  if (mkdir(path.c_str(), 0700) == 0) return chmod(path.c_str(), mode) == 0;
  return errno == EEXIST;
}

// Creates a folder and the missing folders above it. False with errno set.
bool make_folders(const std::string& path, mode_t mode) {
  if (path.empty() || make_folder(path, mode)) return true;
  if (errno != ENOENT) return false;
  return make_folders(path.substr(0, path.rfind('/')), mode) && make_folder(path, mode);
}

}  // namespace

std::string registry_path(const RegistryPlace& place) {
  std::string path = environment_variable(place.variable);
  // SQLite takes some names, such as ":memory:", for something other than a file.
  if (!path.empty() && path.front() != '/') path.insert(0, "./");
  if (!path.empty()) return path;
  if (place.file[0] == '/') return place.file;
  path = user_folder(Variable::kXdgConfigHome, ".config");
  if (!path.empty()) path.append("/").append(place.file);
  return path;
}

int make_registry_file(const RegistryPlace& place, const std::string& path) {
  constexpr int kNew = O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC;
  int file = open(path.c_str(), kNew, 0600);
  if (file < 0 && errno == ENOENT) {
    if (!make_folders(path.substr(0, path.rfind('/')), place.folder_mode)) return errno;
    file = open(path.c_str(), kNew, 0600);
  }
  if (file < 0) return errno == EEXIST ? 0 : errno;
  // Closing a file releases all locks that the process has on it. A new file has no locks.
  const int error = fchmod(file, place.file_mode) == 0 ? 0 : errno;
  close(file);
  return error;
}

}  // namespace orx::platform
