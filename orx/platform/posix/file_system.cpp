#include <orx/platform/file_system.h>

#include <orx/base/errno_guard.h>
#include <orx/platform/posix/drive_path.h>
#include <orx/platform/posix/support/cancellation_block.h>
#include <orx/platform/posix/support/descriptor.h>
#include <orx/platform/posix/support/directory.h>
#include <orx/platform/posix/support/error_text.h>
#include <orx/platform/posix/support/file_attributes.h>

#include <fcntl.h>
#include <limits.h>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>
#include <utility>

namespace orx::platform {
namespace {

constexpr std::size_t kBufferSize = 64 * 1024;
constexpr int kMaxTemporaryNames = 100;
// The search for temporary files of killed processes ends after this number of entries, which takes some
// milliseconds.
constexpr int kMaxEntriesSearched = 10'000;
constexpr mode_t kNewFileMode = 0666;

// Returns false, for `return fail(reason)`.
bool fail(std::string& reason, std::string text = error_text(errno)) {
  reason = std::move(text);
  return false;
}

// The beginning of the names of all temporary files for one file. It has a hash in place of the file's name,
// because the name may already have the greatest length that the system allows.
std::string temporary_prefix(std::string_view name) {
  std::uint32_t hash = 2166136261U;  // FNV-1a
  for (const char c : name) hash = (hash ^ static_cast<unsigned char>(c)) * 16777619U;
  char prefix[32];
  std::snprintf(prefix, sizeof prefix, ".orx-%08x-", hash);
  return prefix;
}

// A random name, so that another user cannot put a link there beforehand.
std::string temporary_name(std::string_view name) {
  std::uint64_t random = 0;
  if (getrandom(&random, sizeof random, 0) != sizeof random) random = reinterpret_cast<std::uintptr_t>(&name);
  char end[32];
  std::snprintf(end, sizeof end, "%016llx.tmp", static_cast<unsigned long long>(random));
  return temporary_prefix(name) + end;
}

// The mode of the temporary file until its owner and group are those of the old file. Until then it may
// belong to another group, which must not get rights that everybody does not have.
mode_t initial_mode(mode_t old) {
  const mode_t of_group = old >> 3 & 07;
  const mode_t of_others = old & 07;
  return (of_group & ~of_others) == 0 ? old : old & 0700;
}

void copy_owner(int file, const struct stat& old) {
  if (fchown(file, old.st_uid, old.st_gid) == 0) return;
  // Only the administrator may change the owner, but a user may set a group that he belongs to.
  [[maybe_unused]] const int ignored = fchown(file, static_cast<uid_t>(-1), old.st_gid);
}

// Reads a file from its beginning to its end.
bool read_all(int file, std::string& bytes) {
  struct stat status;
  if (fstat(file, &status) != 0) return false;
  bytes.resize(static_cast<std::size_t>(status.st_size));
  std::size_t size = 0;
  while (size < bytes.size()) {
    const auto at = static_cast<off_t>(size);
    const ssize_t read =
        retry_if_interrupted([&] { return pread(file, &bytes[size], bytes.size() - size, at); });
    if (read < 0) return false;
    if (read == 0) break;
    size += static_cast<std::size_t>(read);
  }
  bytes.resize(size);
  return true;
}

// Replaces the content of a file that is open.
bool overwrite_file(int file, std::string_view bytes) {
  return lseek(file, 0, SEEK_SET) == 0 && write_all(file, bytes) &&
         retry_if_interrupted([&] { return ftruncate(file, static_cast<off_t>(bytes.size())); }) == 0 &&
         retry_if_interrupted([&] { return fsync(file); }) == 0;
}

// Whether the folder refused a new file or a rename, or the name is a mount point. The file itself may still
// be writable.
bool is_folder_error(int error) {
  return error == EACCES || error == EPERM || error == EROFS || error == EBUSY;
}

}  // namespace

EntryKind entry_kind(const char* path) {
  const ErrnoGuard errno_guard;
  SystemPath where = parse_path(path);
  struct stat status;
  if (on_path(where, [&](const char* name) { return stat(name, &status); }) != 0) return EntryKind::kNone;
  return S_ISDIR(status.st_mode) ? EntryKind::kFolder : EntryKind::kFile;
}

std::optional<std::uint64_t> readable_size(const char* path) {
  const ErrnoGuard errno_guard;
  const CancellationBlock cancellation_block;
  SystemPath where = parse_path(path);
  const std::string& name = where.name;
  struct stat status;
  if (on_path(where, [&](const char* candidate) { return stat(candidate, &status); }) != 0) return {};
  if (S_ISDIR(status.st_mode) || S_ISSOCK(status.st_mode)) return {};
  // Only regular files are opened. Opening a pipe waits for its other end or wakes it, and opening a device
  // may have any effect.
  if (!S_ISREG(status.st_mode)) {
    if (faccessat(AT_FDCWD, name.c_str(), R_OK, AT_EACCESS) != 0) return {};
    return 0;
  }
  constexpr int kFlags = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  const Descriptor file(retry_if_interrupted([&] { return open(name.c_str(), kFlags); }));
  // EWOULDBLOCK: another process has a lease on the file. It must give the lease up, so the file can be
  // opened, but not without waiting.
  if (!file.is_open() && errno != EWOULDBLOCK) return {};
  // On a network file system, opening the file brings its size up to date.
  if (file.is_open() && fstat(file, &status) != 0) return {};
  return static_cast<std::uint64_t>(status.st_size);
}

std::uint64_t free_space(const char* folder) {
  const ErrnoGuard errno_guard;
  SystemPath where = parse_path(folder);
  if (where.name.empty()) return 0;
  where.name += '/';  // then only a folder is found
  struct statvfs volume;
  const auto query = [&](const char* name) {
    return retry_if_interrupted([&] { return statvfs(name, &volume); });
  };
  if (on_path(where, query) != 0 || volume.f_frsize == 0) return 0;
  const std::uint64_t blocks = std::min<std::uint64_t>(volume.f_bavail, UINT64_MAX / volume.f_frsize);
  return blocks * volume.f_frsize;
}

// A replacement in progress. Usually `file` is the temporary file and `buffer` the bytes that are not in it
// yet. If the folder refuses a temporary file, the replacement is in place: `buffer` has all bytes, and
// Commit writes them into the old file.
//
// All names are relative to the descriptor of the folder. So the replacement stays in that folder even if the
// host changes its current directory or the folder is renamed.
struct FileReplacement::State {
  Descriptor folder;
  Descriptor file;        // the temporary file, which this process has locked
  std::string name;       // of the file to replace, within the folder
  std::string temporary;  // the name of the temporary file; empty when there is no file to remove
  std::string buffer;
  std::string refusal;  // in place: why there is no temporary file
  bool is_in_place = false;

  ~State() {
    if (!temporary.empty()) unlinkat(folder, temporary.c_str(), 0);
  }

  // Opens the folder of the file that a path leads to, and reads the status of that file. Links at the end of
  // the path are followed here, one at a time, because the file that they lead to need not exist. Links in
  // the middle of the path are followed by the system.
  bool Locate(std::string path, struct stat& old, bool& exists, std::string& reason) {
    for (int followed = 0; followed <= kMaxLinks; ++followed) {
      const std::size_t name_at = path.rfind('/') + 1;
      name = path.substr(name_at);
      if (name.empty()) return fail(reason, error_text(path.empty() ? ENOENT : EISDIR));
      if (!OpenFolder(name_at == 0 ? "." : path.substr(0, name_at).c_str(), reason)) return false;
      exists = fstatat(folder, name.c_str(), &old, AT_SYMLINK_NOFOLLOW) == 0;
      if (!exists) return errno == ENOENT || fail(reason);
      if (!S_ISLNK(old.st_mode)) return true;
      char target[PATH_MAX];
      const ssize_t size = readlinkat(folder, name.c_str(), target, sizeof target);
      if (size < 0) return fail(reason);
      path.replace(target[0] == '/' ? 0 : name_at, std::string::npos, target, static_cast<std::size_t>(size));
    }
    return fail(reason, error_text(ELOOP));
  }

  bool OpenFolder(const char* path, std::string& reason) {
    folder = Descriptor(open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    // A folder that this user may write but not read is opened as a path. Only its flush fails then.
    if (!folder.is_open() && errno == EACCES)
      folder = Descriptor(open(path, O_PATH | O_DIRECTORY | O_CLOEXEC));
    return folder.is_open() || fail(reason);
  }

  // Refuses anything that is not a regular file, and a file that this user may not write, which a rename
  // would replace nevertheless. The old file is not opened, because opening a pipe blocks.
  bool CheckOld(const struct stat& old, std::string& reason) const {
    if (S_ISDIR(old.st_mode)) return fail(reason, error_text(EISDIR));
    if (!S_ISREG(old.st_mode)) return fail(reason, "Not a regular file");
    // The usual case, which costs no system call.
    if (old.st_uid == geteuid() && (old.st_mode & S_IWUSR) != 0) return true;
    return faccessat(folder, name.c_str(), W_OK, AT_EACCESS) == 0 || fail(reason);
  }

  // Creates and locks the temporary file. The lock says that its process is alive: other processes remove a
  // temporary file that is not locked. That may happen here between the creation and the lock. The file then
  // has no name any more (st_nlink is 0), and another name is tried. Returns 0 or the error number.
  int CreateTemporary(mode_t mode) {
    constexpr int kFlags = O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW;
    for (int tried = 0; tried < kMaxTemporaryNames; ++tried) {
      std::string candidate = temporary_name(name);
      file =
          Descriptor(retry_if_interrupted([&] { return openat(folder, candidate.c_str(), kFlags, mode); }));
      if (!file.is_open() && errno == EEXIST) continue;
      if (!file.is_open()) return errno;
      const bool is_taken = flock(file, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
      struct stat status;
      if (!is_taken && fstat(file, &status) == 0 && status.st_nlink > 0) {
        temporary = std::move(candidate);
        return 0;
      }
    }
    return EEXIST;
  }

  // Removes the temporary files that killed replacements of this file have left. Removes nothing where the
  // file system has no locks, because the process that writes a file may still run.
  void RemoveAbandoned() const {
    const int copy = openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const Directory entries(copy >= 0 ? fdopendir(copy) : nullptr);  // owns `copy`
    if (entries == nullptr) {
      if (copy >= 0) close(copy);
      return;
    }
    const std::string prefix = temporary_prefix(name);
    for (int i = 0; i < kMaxEntriesSearched; ++i) {
      const dirent* entry = readdir(entries.get());
      if (entry == nullptr) return;
      const bool is_for_file = std::string_view(entry->d_name).starts_with(prefix);
      if (is_for_file && temporary != entry->d_name) RemoveIfAbandoned(entry->d_name);
    }
  }

  void RemoveIfAbandoned(const char* candidate) const {
    const Descriptor found(openat(folder, candidate, O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (found.is_open() && flock(found, LOCK_EX | LOCK_NB) == 0) unlinkat(folder, candidate, 0);
  }

  // Gives the temporary file the owner, permissions and access control list of the old file. The owner is
  // first, because the system may remove permission bits when the owner changes.
  bool CopyAttributes(const struct stat& old, std::string& reason) const {
    struct stat status;
    if (fstat(file, &status) != 0) return fail(reason);
    const bool has_owner = status.st_uid == old.st_uid && status.st_gid == old.st_gid;
    if (!has_owner) copy_owner(file, old);
    mode_t mode = old.st_mode & kPermissionBits;
    if (CopyAccessControlList(mode)) return true;
    if (has_owner && (status.st_mode & kPermissionBits) == mode) return true;
    return fchmod(file, mode) == 0 || fail(reason);
  }

  // Reads the old file's access control list. Returns its size, or -1 with errno set. The file is read
  // through /proc, without opening it; it is opened only where /proc does not exist.
  ssize_t ReadAccessControlList(char* list, std::size_t size) const {
    const std::string path = "/proc/self/fd/" + std::to_string(folder) + '/' + name;
    const ssize_t read = lgetxattr(path.c_str(), kAccessControlList, list, size);
    if (read >= 0 || errno != ENOENT) return read;
    const Descriptor old(
        openat(folder, name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    return old.is_open() ? fgetxattr(old, kAccessControlList, list, size) : -1;
  }

  // Returns true when the temporary file now has the old file's list, which includes the permissions. In the
  // mode of a file with a list, the bits of the group are the list's mask. Without the list, the same bits
  // would open the file to the whole group. So they are removed from `mode` when the list cannot be copied.
  bool CopyAccessControlList(mode_t& mode) const {
    std::array<char, 8192> list{};
    const ssize_t size = ReadAccessControlList(list.data(), list.size());
    if (size < 0) {
      if (errno != ENODATA && errno != ENOTSUP) mode &= ~static_cast<mode_t>(S_IRWXG);
      fremovexattr(file, kAccessControlList);  // a default list of the folder may have given the file a list
      return false;
    }
    if (fsetxattr(file, kAccessControlList, list.data(), static_cast<std::size_t>(size), 0) == 0) return true;
    mode &= ~static_cast<mode_t>(S_IRWXG);
    return false;
  }

  // Writes into the old file itself, and restores its content when that fails. `open_failure` becomes the
  // reason when the old file cannot be read.
  bool WriteInPlace(std::string_view bytes, const std::string& open_failure, std::string& reason) const {
    const Descriptor old(retry_if_interrupted([&] {
      return openat(folder, name.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    }));
    std::string old_bytes;
    if (!old.is_open() || !read_all(old, old_bytes)) return fail(reason, open_failure);
    if (overwrite_file(old, bytes)) return true;
    const int error = errno;
    // Restore first: memory may run out while the reason is made.
    const bool is_restored = overwrite_file(old, old_bytes);
    const char* const loss = is_restored ? "" : "; the old content could not be restored";
    return fail(reason, error_text(error) + loss);
  }

  bool WriteUnbuffered(std::string_view bytes, std::string& reason) const {
    return write_all(file, bytes) || fail(reason);
  }

  bool Flush(std::string& reason) {
    const bool written = WriteUnbuffered(buffer, reason);
    buffer.clear();
    return written;
  }

  // A path with a drive that leads to nothing is searched for in other letter case. If a file is found, that
  // file is replaced; otherwise the new file goes to the folder that was found.
  bool Open(const char* path, std::string& reason) {
    struct stat old;
    bool exists = false;
    SystemPath where = parse_path(path);
    bool is_located = Locate(where.name, old, exists, reason);
    if (where.drive_folder_length > 0 && !exists) {
      const int error = find_in_any_case(where);
      if (error == ENOTUNIQ) return fail(reason, error_text(error));
      if (error == 0) is_located = Locate(where.name, old, exists, reason);
    }
    if (!is_located) return false;
    if (exists && !CheckOld(old, reason)) return false;
    buffer.reserve(kBufferSize);
    // The permissions of a new file are limited by the umask alone.
    const mode_t mode = exists ? initial_mode(old.st_mode & kPermissionBits) : kNewFileMode;
    const int error = CreateTemporary(mode);
    if (error != 0) {
      refusal = error_text(error);
      is_in_place = exists && is_folder_error(error);
      return is_in_place || fail(reason, refusal);
    }
    RemoveAbandoned();
    return !exists || CopyAttributes(old, reason);
  }

  bool Write(const char* bytes, std::size_t size, std::string& reason) {
    if (is_in_place) {
      buffer.append(bytes, size);
      return true;
    }
    if (buffer.size() + size > kBufferSize && !Flush(reason)) return false;
    if (size > kBufferSize) return WriteUnbuffered({bytes, size}, reason);  // the buffer is empty now
    buffer.append(bytes, size);
    return true;
  }

  bool Commit(std::string& reason) {
    if (is_in_place) return WriteInPlace(buffer, refusal, reason);
    if (!Flush(reason)) return false;
    if (retry_if_interrupted([&] { return fsync(file); }) != 0) return fail(reason);
    if (renameat(folder, temporary.c_str(), folder, name.c_str()) != 0) {
      const bool is_folder_refusal = is_folder_error(errno);
      const std::string rename_failure = error_text(errno);
      reason = rename_failure;
      std::string bytes;
      if (!is_folder_refusal || !read_all(file, bytes)) return false;
      reason.clear();
      return WriteInPlace(bytes, rename_failure, reason);
    }
    temporary.clear();
    // The new file has replaced the old one. The flush of the folder makes the rename safe against a power
    // cut. Its failure is not reported, because the content is already in place.
    retry_if_interrupted([&] { return fsync(folder); });
    return true;
  }
};

FileReplacement::FileReplacement() = default;

FileReplacement::~FileReplacement() {
  const ErrnoGuard errno_guard;
  const CancellationBlock cancellation_block;
  state_.reset();
}

bool FileReplacement::Open(const char* path, std::string& reason) {
  const ErrnoGuard errno_guard;
  const CancellationBlock cancellation_block;
  state_.reset();
  auto state = std::make_unique<State>();
  if (!state->Open(path, reason)) return false;
  state_ = std::move(state);
  return true;
}

// The state is put back only after success, so that every failure, and an exception too, abandons the
// replacement.
bool FileReplacement::Write(const void* bytes, std::size_t size, std::string& reason) {
  const ErrnoGuard errno_guard;
  const CancellationBlock cancellation_block;
  std::unique_ptr<State> state = std::move(state_);
  if (state == nullptr) return fail(reason, "No file is open");
  if (!state->Write(static_cast<const char*>(bytes), size, reason)) return false;
  state_ = std::move(state);
  return true;
}

bool FileReplacement::Commit(std::string& reason) {
  const ErrnoGuard errno_guard;
  const CancellationBlock cancellation_block;
  const std::unique_ptr<State> state = std::move(state_);
  if (state == nullptr) return fail(reason, "No file is open");
  return state->Commit(reason);
}

bool remove_file(const char* path) {
  const ErrnoGuard errno_guard;
  SystemPath where = parse_path(path);
  return on_path(where, unlink) == 0;
}

}  // namespace orx::platform
