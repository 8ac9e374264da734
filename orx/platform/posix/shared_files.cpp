#include <orx/platform/shared_files.h>

#include <orx/base/errno_guard.h>
#include <orx/platform/posix/drive_path.h>
#include <orx/platform/posix/support/cancellation_block.h>
#include <orx/platform/posix/support/descriptor.h>

#include <dirent.h>
#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <string>
#include <utility>

namespace orx::platform {
namespace {

constexpr int kMaxLinks = 40;  // as many as the system itself follows
constexpr mode_t kFileBits = 0666;
constexpr mode_t kFolderBits = S_ISGID | S_ISVTX | 0777;  // who may delete what is inherited, too

constexpr int kOpenLogFlags = O_WRONLY | O_APPEND | O_CLOEXEC | O_NOCTTY | O_NONBLOCK | O_NOFOLLOW;

// The folder at the end of a path, or above its last name. The path may end in a slash.
struct Place {
  explicit Place(std::string path) {
    while (path.size() > 1 && path.ends_with('/')) path.pop_back();
    const std::size_t name_at = path.rfind('/') + 1;
    name = path.substr(name_at);
    path.resize(name_at);
    folder_path = path.empty() ? "." : path;
    folder = Descriptor(open(folder_path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    is_found = folder.is_open() && fstat(folder, &status) == 0 && !name.empty();
  }

  // Nobody else has put anything there.
  bool IsPrivate() const {
    return (status.st_uid == geteuid() || status.st_uid == 0) && (status.st_mode & 0022) == 0;
  }

  // The system gives the folder's default list to whatever is made in it, and then ignores the umask.
  bool HasDefaultList() const {
    return getxattr(folder_path.c_str(), "system.posix_acl_default", nullptr, 0) > 0;
  }

  mode_t ModeForNew(mode_t bits) const {
    return HasDefaultList() ? bits & 0777 : status.st_mode & bits & 0777;
  }

  std::string folder_path;
  std::string name;
  Descriptor folder;
  struct stat status {};
  bool is_found = false;
};

// The folder's group gets rights only on what has its group.
mode_t inherited_mode(int made, const Place& place, const struct stat& status) {
  const mode_t mode = place.status.st_mode;
  const bool is_same = status.st_uid == place.status.st_uid && status.st_gid == place.status.st_gid;
  if (is_same || fchown(made, place.status.st_uid, place.status.st_gid) == 0) return mode;
  if (fchown(made, static_cast<uid_t>(-1), place.status.st_gid) == 0) return mode;
  return (mode & ~mode_t{S_ISGID | 0070}) | (mode & 0007) << 3;
}

// The rights of single users and groups, if the folder has such.
bool copy_access_control_list(const Place& place, int made) {
  constexpr const char* kName = "system.posix_acl_access";
  char list[4096];
  const ssize_t size = getxattr(place.folder_path.c_str(), kName, list, sizeof list);
  return size > 0 && fsetxattr(made, kName, list, static_cast<std::size_t>(size), 0) == 0;
}

// Gives what was made the rights, the group and, if the administrator does it, the owner of its folder.
void inherit_attributes(int made, const Place& place, mode_t bits) {
  struct stat status;
  if (fstat(made, &status) != 0) return;
  mode_t mode = inherited_mode(made, place, status) & bits;
  if (place.HasDefaultList()) {
    mode = (status.st_mode & 0777) | (mode & ~mode_t{0777});
  } else if (copy_access_control_list(place, made)) {
    status.st_mode = 0;  // the list has changed it
  }
  if ((status.st_mode & kFolderBits) != mode) fchmod(made, mode);
}

// In a shared folder, another user may have replaced the new folder by another one of this user. Nothing is
// lost if an empty folder gets new rights.
bool is_own_new_folder(int folder) {
  constexpr ssize_t kTwoEntries = 48;  // "." and ".."
  struct stat status;
  char entries[256];
  return fstat(folder, &status) == 0 && status.st_uid == geteuid() &&
         getdents64(folder, entries, sizeof entries) <= kTwoEntries;
}

// Whether a log may be written to what was found at its path, or through it if it is a link. Other users who
// may write to the folder can plant a link or a second name of a file of this user, or a pipe. A file with
// one name is safe: it was made there, as a log.
bool is_trusted(const struct stat& status, const Place& place) {
  if (place.IsPrivate()) return true;
  if (S_ISREG(status.st_mode)) return status.st_nlink <= 1;
  return status.st_uid == geteuid() || status.st_uid == 0;
}

// The path that a link leads to; empty when it may not be followed, or is not a link any more.
std::string read_link(const Place& place) {
  const Descriptor link(openat(place.folder, place.name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
  struct stat status;
  if (!link.is_open() || fstat(link, &status) != 0 || !is_trusted(status, place)) return "";
  char target[PATH_MAX];
  const ssize_t size = readlinkat(link, "", target, sizeof target);
  if (size <= 0) return "";
  const std::string path(target, static_cast<std::size_t>(size));
  return path.front() == '/' ? path : place.folder_path + '/' + path;
}

// Not with O_CREAT for a file that exists: in a folder where only its owner may delete a file, the system
// refuses that for the files of others.
Descriptor open_or_create(const Place& place) {
  Descriptor file(
      retry_if_interrupted([&] { return openat(place.folder, place.name.c_str(), kOpenLogFlags); }));
  struct stat status;
  if (file.is_open() && fstat(file, &status) == 0 && is_trusted(status, place)) return file;
  if (file.is_open()) errno = EACCES;
  if (errno != ENOENT) return Descriptor();
  const mode_t mode = place.ModeForNew(kFileBits);
  constexpr int kNew = kOpenLogFlags | O_CREAT | O_EXCL;
  file =
      Descriptor(retry_if_interrupted([&] { return openat(place.folder, place.name.c_str(), kNew, mode); }));
  if (file.is_open()) inherit_attributes(file, place, kFileBits);
  return file;
}

// Follows the links at the end of the path one by one, since each may have been planted.
Descriptor open_through_links(std::string path) {
  for (int tried = 0; tried <= kMaxLinks && !path.empty(); ++tried) {
    const Place place(path);
    if (!place.is_found || path.ends_with('/')) break;
    Descriptor file = open_or_create(place);
    if (file.is_open() || (errno != ELOOP && errno != EEXIST)) return file;
    if (errno == ELOOP) path = read_link(place);
  }
  return Descriptor();
}

// Most logs are a file of one name, which can be opened in one step.
Descriptor open_plain_log(const std::string& path) {
  Descriptor file(retry_if_interrupted([&] { return open(path.c_str(), kOpenLogFlags); }));
  struct stat status;
  const bool is_plain =
      file.is_open() && fstat(file, &status) == 0 && S_ISREG(status.st_mode) && status.st_nlink <= 1;
  return is_plain ? std::move(file) : Descriptor();
}

Descriptor open_log(const char* path) {
  SystemPath where = parse_path(path);
  Descriptor file = open_plain_log(where.name);
  // A log that exists in another letter case is found before a new one is made.
  const int error = file.is_open() || errno != ENOENT ? ENOENT : find_in_any_case(where);
  if (error == ENOTUNIQ) return Descriptor();
  return file.is_open() ? std::move(file) : open_through_links(where.name);
}

}  // namespace

bool create_shared_folder(const char* path) {
  const ErrnoGuard errno_guard;
  const CancellationBlock cancellation_block;
  SystemPath where = parse_path(path);
  // A folder that exists in another letter case is there already.
  struct stat status;
  const auto is_there = [&](const char* name) { return lstat(name, &status); };
  if (where.drive_folder_length > 0 && (on_path(where, is_there) == 0 || errno == ENOTUNIQ)) return false;
  const Place place(where.name);
  if (!place.is_found) return false;
  if (mkdirat(place.folder, place.name.c_str(), place.ModeForNew(kFolderBits)) != 0) return false;
  constexpr int kFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
  const Descriptor made(openat(place.folder, place.name.c_str(), kFlags));
  if (made.is_open() && is_own_new_folder(made)) inherit_attributes(made, place, kFolderBits);
  return true;
}

bool clear_log(const char* path) {
  const ErrnoGuard errno_guard;
  const CancellationBlock cancellation_block;
  Descriptor file = open_log(path);
  struct stat status;
  if (!file.is_open() || fstat(file, &status) != 0) return false;
  return (!S_ISREG(status.st_mode) || ftruncate(file, 0) == 0) && file.Close();
}

bool append_to_log(const char* path, std::string_view bytes) {
  const ErrnoGuard errno_guard;
  const CancellationBlock cancellation_block;
  Descriptor file = open_log(path);
  const bool is_written = file.is_open() && write_all(file, bytes);
  return file.Close() && is_written;
}

}  // namespace orx::platform
