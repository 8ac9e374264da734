#include <orx/platform/posix/registry/place.h>

#include <orx/platform/posix/environment.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace orx::platform {
namespace {

// With the folders above it; one that was made gets its mode whatever the umask.
bool make_folder(const std::string& path, mode_t mode) {
  if (path.empty()) return true;
  if (mkdir(path.c_str(), 0700) == 0) return chmod(path.c_str(), mode) == 0;
  if (errno == EEXIST) return true;
  return errno == ENOENT && make_folder(path.substr(0, path.rfind('/')), mode) &&
         (mkdir(path.c_str(), 0700) == 0 ? chmod(path.c_str(), mode) == 0 : errno == EEXIST);
}

}  // namespace

std::string registry_path(const RegistryPlace& place) {
  std::string path = environment_variable(place.variable);
  if (!path.empty() && path.front() != '/') path.insert(0, "./");
  if (!path.empty()) return path;
  if (place.file[0] == '/') return place.file;
  path = user_folder("XDG_CONFIG_HOME", ".config");
  if (!path.empty()) path.append("/").append(place.file);
  return path;
}

int make_registry_file(const RegistryPlace& place, const std::string& path) {
  constexpr int kNew = O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC;
  int file = open(path.c_str(), kNew, 0600);
  if (file < 0 && errno == ENOENT) {
    if (!make_folder(path.substr(0, path.rfind('/')), place.folder_mode)) return errno;
    file = open(path.c_str(), kNew, 0600);
  }
  if (file < 0) return errno == EEXIST ? 0 : errno;
  // Closing a file gives up the locks that the process has on it. Here it has none: the file is new.
  const int error = fchmod(file, place.file_mode) == 0 ? 0 : errno;
  close(file);
  return error;
}

}  // namespace orx::platform
