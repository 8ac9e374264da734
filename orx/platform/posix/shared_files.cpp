#include <orx/platform/shared_files.h>

#include <orx/base/errno_guard.h>
#include <orx/platform/posix/drive_path.h>
#include <orx/platform/posix/support/cancellation_block.h>
#include <orx/platform/posix/support/descriptor.h>
#include <orx/platform/posix/support/file_attributes.h>

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

// The bits that a new file or folder takes over from its folder. A folder also takes over that its entries
// get its group (S_ISGID), and that users may delete only their own entries (S_ISVTX).
constexpr mode_t kFileBits = 0666;
constexpr mode_t kFolderBits = S_ISGID | S_ISVTX | kPermissionBits;
constexpr std::size_t kMaxListSize = 4096;  // of an access control list

constexpr int kOpenLogFlags = O_WRONLY | O_APPEND | O_CLOEXEC | O_NOCTTY | O_NONBLOCK | O_NOFOLLOW;

// The last name of a path, and the folder above it. Slashes at the end of the path do not count.
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

  // Whether only this user and the administrator can put anything into the folder.
  bool IsPrivate() const {
    return (status.st_uid == geteuid() || status.st_uid == 0) && (status.st_mode & 0022) == 0;
  }

  // Whether the folder has a default access control list. The system then gives that list to every new entry
  // and ignores the umask.
  bool HasDefaultList() const {
    return getxattr(folder_path.c_str(), "system.posix_acl_default", nullptr, 0) > 0;
  }

  // The mode with which an entry is created; inherit_attributes sets the rest.
  mode_t ModeForNew(mode_t bits) const {
    const mode_t allowed = HasDefaultList() ? kPermissionBits : status.st_mode & kPermissionBits;
    return bits & allowed;
  }

  std::string folder_path;
  std::string name;
  Descriptor folder;
  struct stat status {};  // of the folder
  bool is_found = false;  // the folder is open, and the name is not empty
};

// Gives a new entry the owner and the group of its folder as far as this user may, and returns the mode that
// goes with them. If the entry cannot get the folder's group, its own group gets only the rights that
// everybody has in the folder.
mode_t inherit_owner(int entry, const Place& place, const struct stat& status) {
  const mode_t mode = place.status.st_mode;
  const bool is_same = status.st_uid == place.status.st_uid && status.st_gid == place.status.st_gid;
  if (is_same || fchown(entry, place.status.st_uid, place.status.st_gid) == 0) return mode;
  if (fchown(entry, static_cast<uid_t>(-1), place.status.st_gid) == 0) return mode;
  return (mode & ~mode_t{S_ISGID | S_IRWXG}) | (mode & S_IRWXO) << 3;
}

// Copies the rights of single users and groups. False when the folder has no access control list.
bool copy_access_control_list(const Place& place, int entry) {
  char list[kMaxListSize];
  const ssize_t size = getxattr(place.folder_path.c_str(), kAccessControlList, list, sizeof list);
  return size > 0 && fsetxattr(entry, kAccessControlList, list, static_cast<std::size_t>(size), 0) == 0;
}

// Gives a new entry the rights and the group of its folder, and also its owner if the administrator created
// it.
void inherit_attributes(int entry, const Place& place, mode_t bits) {
  struct stat status;
  if (fstat(entry, &status) != 0) return;
  mode_t mode = inherit_owner(entry, place, status) & bits;
  if (place.HasDefaultList()) {
    // The system has set the permissions from the default list.
    mode = (status.st_mode & kPermissionBits) | (mode & ~kPermissionBits);
  } else if (copy_access_control_list(place, entry)) {
    status.st_mode = 0;  // the list has changed the mode, so it is always set below
  }
  if ((status.st_mode & kFolderBits) != mode) fchmod(entry, mode);
}

// Whether a folder, opened by name after it was created, is still the one that was created. In a shared
// folder another user may have renamed another folder of this user to that name. An empty folder of this user
// counts as the new one: nothing is lost if it gets other rights.
bool is_own_new_folder(int folder) {
  constexpr ssize_t kTwoEntries = 48;  // the bytes that getdents64 returns for "." and ".."
  struct stat status;
  char entries[256];
  return fstat(folder, &status) == 0 && status.st_uid == geteuid() &&
         getdents64(folder, entries, sizeof entries) <= kTwoEntries;
}

// Whether the entry at the path of a log may be used: a file or a pipe to write to it, a link to follow it.
// In a shared folder another user can plant a link to a file of this user, a second name for it (a hard
// link), or a pipe. A regular file with only one name is safe: it was created in this folder, so it is a log.
// A link, a pipe or a device is safe if it belongs to this user or the administrator.
bool is_trusted(const struct stat& status, const Place& place) {
  if (place.IsPrivate()) return true;
  if (S_ISREG(status.st_mode)) return status.st_nlink <= 1;
  return status.st_uid == geteuid() || status.st_uid == 0;
}

// The path that a link leads to; empty when the link must not be followed, or the entry is not a link any
// more. The link is opened first, so that the check and the reading see the same link.
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

// Opens a log that exists, or creates it. These are two calls, because with O_CREAT the system refuses to
// open existing files of other users in a folder where users may delete only their own files (S_ISVTX).
Descriptor open_or_create(const Place& place) {
  Descriptor file(
      retry_if_interrupted([&] { return openat(place.folder, place.name.c_str(), kOpenLogFlags); }));
  struct stat status;
  if (file.is_open() && fstat(file, &status) == 0 && is_trusted(status, place)) return file;
  if (file.is_open()) errno = EACCES;
  if (errno != ENOENT) return Descriptor();
  const mode_t mode = place.ModeForNew(kFileBits);
  constexpr int kNewLogFlags = kOpenLogFlags | O_CREAT | O_EXCL;
  file = Descriptor(
      retry_if_interrupted([&] { return openat(place.folder, place.name.c_str(), kNewLogFlags, mode); }));
  if (file.is_open()) inherit_attributes(file, place, kFileBits);
  return file;
}

// Follows the links at the end of the path one at a time, since each of them may have been planted. EEXIST
// means that another process has just created the log; then it is opened.
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

// Opens an existing log without the checks of its folder, if it is a regular file with only one name. That is
// the usual case, and takes two system calls.
Descriptor open_plain_log(const std::string& path) {
  Descriptor file(retry_if_interrupted([&] { return open(path.c_str(), kOpenLogFlags); }));
  struct stat status;
  const bool is_plain =
      file.is_open() && fstat(file, &status) == 0 && S_ISREG(status.st_mode) && status.st_nlink <= 1;
  return is_plain ? std::move(file) : Descriptor();
}

Descriptor open_log(const char* path) {
  SystemPath where = parse_path(path);
  errno = 0;  // a file that opens but is not a plain file sets no error
  Descriptor file = open_plain_log(where.name);
  if (file.is_open()) return file;
  // A log that exists in other letter case is used, not a new one.
  if (errno == ENOENT && find_in_any_case(where) == ENOTUNIQ) return Descriptor();
  return open_through_links(where.name);
}

}  // namespace

bool create_shared_folder(const char* path) {
  const ErrnoGuard errno_guard;
  const CancellationBlock cancellation_block;
  SystemPath where = parse_path(path);
  // Below a drive, a folder that exists in other letter case is the same folder.
  struct stat status;
  const auto query = [&](const char* name) { return lstat(name, &status); };
  if (where.drive_folder_length > 0 && (on_path(where, query) == 0 || errno == ENOTUNIQ)) return false;
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
