#include <orx/platform/file_system.h>

#include <orx/base/errno_guard.h>
#include <orx/platform/posix/drive_path.h>
#include <orx/platform/posix/support/cancellation_block.h>
#include <orx/platform/posix/support/descriptor.h>
#include <orx/platform/posix/support/error_text.h>

#include <dirent.h>
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
constexpr int kMaxLinks = 40;  // as many as the system itself follows
constexpr int kMaxTemporaryNames = 100;
constexpr int kMaxEntriesSearched = 10'000;  // for temporaries of killed processes: some milliseconds
constexpr char kAccessControlList[] = "system.posix_acl_access";
constexpr mode_t kPermissionBits = 0777;

bool fail(std::string& reason, std::string text = error_text(errno)) {
  reason = std::move(text);
  return false;
}

// The beginning of the names of all temporaries for a file. It does not hold the file's name, which may have
// full length.
std::string temporary_prefix(std::string_view name) {
  std::uint32_t hash = 2166136261U;  // FNV-1a
  for (const char c : name) hash = (hash ^ static_cast<unsigned char>(c)) * 16777619U;
  char prefix[32];
  std::snprintf(prefix, sizeof prefix, ".orx-%08x-", hash);
  return prefix;
}

// Nobody can foretell the name, and so nobody can put a link in its place.
std::string temporary_name(std::string_view name) {
  std::uint64_t random = 0;
  if (getrandom(&random, sizeof random, 0) != sizeof random) random = reinterpret_cast<std::uintptr_t>(&name);
  char end[32];
  std::snprintf(end, sizeof end, "%016llx.tmp", static_cast<unsigned long long>(random));
  return temporary_prefix(name) + end;
}

// What a new file may be at first, so that its content is never open to more people than the old one's: until
// the owner has been set, its group may be another.
mode_t initial_mode(mode_t old) {
  const mode_t of_group = old >> 3 & 07;
  const mode_t of_others = old & 07;
  return (of_group & ~of_others) == 0 ? old : old & 0700;
}

void copy_owner(int file, const struct stat& old) {
  if (fchown(file, old.st_uid, old.st_gid) == 0) return;
  // Only the administrator may give files away; a group of one's own is worth keeping all the same.
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

// The folder refuses, or the name is a mount point. The file itself may be writable all the same.
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
  // Opening a pipe waits for its other end, or sets that going; opening a device may do anything.
  if (!S_ISREG(status.st_mode)) {
    if (faccessat(AT_FDCWD, name.c_str(), R_OK, AT_EACCESS) != 0) return {};
    return 0;
  }
  constexpr int kFlags = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  const Descriptor file(retry_if_interrupted([&] { return open(name.c_str(), kFlags); }));
  // A file that another process has taken a lease on can be opened as well, once it has been asked for.
  if (!file.is_open() && errno != EWOULDBLOCK) return {};
  if (file.is_open() && fstat(file, &status) != 0) return {};  // what a server says now
  return static_cast<std::uint64_t>(status.st_size);
}

std::uint64_t free_space(const char* folder) {
  const ErrnoGuard errno_guard;
  SystemPath where = parse_path(folder);
  if (where.name.empty()) return 0;
  where.name += '/';  // refuses what is not a folder
  struct statvfs volume;
  const auto query = [&](const char* name) {
    return retry_if_interrupted([&] { return statvfs(name, &volume); });
  };
  if (on_path(where, query) != 0 || volume.f_frsize == 0) return 0;
  const std::uint64_t blocks = std::min<std::uint64_t>(volume.f_bavail, UINT64_MAX / volume.f_frsize);
  return blocks * volume.f_frsize;
}

// All names are taken in the folder that was opened, wherever the process or the folder moves meanwhile.
struct FileReplacement::State {
  Descriptor folder;
  Descriptor file;
  std::string name;
  std::string temporary;  // empty: there is no temporary file
  std::string buffer;
  std::string refusal;       // why no temporary file could be made
  bool is_in_place = false;  // the buffer keeps the whole content until Commit

  ~State() {
    if (!temporary.empty()) unlinkat(folder, temporary.c_str(), 0);
  }

  // Finds the folder and the old file behind a path, through links that need not lead to anything yet. The
  // links on the way to the name at its end are the system's business.
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
    // A folder that may be written but not read is good enough: only its flush fails.
    if (!folder.is_open() && errno == EACCES)
      folder = Descriptor(open(path, O_PATH | O_DIRECTORY | O_CLOEXEC));
    return folder.is_open() || fail(reason);
  }

  // The old file is never opened: one that is a pipe would block.
  bool CheckOld(const struct stat& old, std::string& reason) const {
    if (S_ISDIR(old.st_mode)) return fail(reason, error_text(EISDIR));
    if (!S_ISREG(old.st_mode)) return fail(reason, "Not a regular file");
    if (old.st_uid == geteuid() && (old.st_mode & S_IWUSR) != 0)
      return true;  // by far the most, and at no cost
    return faccessat(folder, name.c_str(), W_OK, AT_EACCESS) == 0 || fail(reason);
  }

  // A running save holds the lock of its temporary. Whoever finds one without a lock removes it, which may
  // also happen between the creation and the lock here: such a file has no name any more, and the next
  // attempt follows.
  // Returns the error number, or 0.
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

  // Removes what killed saves of this file left. Where the file system has no locks, nothing can be removed
  // safely.
  void RemoveAbandoned() const {
    const int copy = openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    DIR* entries = copy >= 0 ? fdopendir(copy) : nullptr;
    if (entries == nullptr) {
      if (copy >= 0) close(copy);
      return;
    }
    const std::string prefix = temporary_prefix(name);
    const dirent* entry = readdir(entries);
    for (int i = 0; entry != nullptr && i < kMaxEntriesSearched; ++i, entry = readdir(entries)) {
      if (std::string_view(entry->d_name).starts_with(prefix) && temporary != entry->d_name) {
        RemoveIfAbandoned(entry->d_name);
      }
    }
    closedir(entries);
  }

  void RemoveIfAbandoned(const char* candidate) const {
    const Descriptor found(openat(folder, candidate, O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (found.is_open() && flock(found, LOCK_EX | LOCK_NB) == 0) unlinkat(folder, candidate, 0);
  }

  // The owner goes first: changing it can take permissions away.
  bool CopyAttributes(const struct stat& old, std::string& reason) const {
    struct stat status;
    if (fstat(file, &status) != 0) return fail(reason);
    const bool is_owners = status.st_uid == old.st_uid && status.st_gid == old.st_gid;
    if (!is_owners) copy_owner(file, old);
    mode_t mode = old.st_mode & kPermissionBits;
    if (CopyAccessControlList(mode)) return true;
    if (is_owners && (status.st_mode & kPermissionBits) == mode) return true;
    return fchmod(file, mode) == 0 || fail(reason);
  }

  // The size of the old file's list, or -1. The file is only opened where /proc is not there.
  ssize_t ReadAccessControlList(char* list, std::size_t size) const {
    const std::string path = "/proc/self/fd/" + std::to_string(folder) + '/' + name;
    const ssize_t read = lgetxattr(path.c_str(), kAccessControlList, list, size);
    if (read >= 0 || errno != ENOENT) return read;
    const Descriptor old(
        openat(folder, name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    return old.is_open() ? fgetxattr(old, kAccessControlList, list, size) : -1;
  }

  // True when the file now has the old one's list, and with it all permissions. A list that cannot be read or
  // set takes its part of `mode` with it: the bits of the group are those of the list's mask, and would open
  // the file to the whole group.
  bool CopyAccessControlList(mode_t& mode) const {
    std::array<char, 8192> list{};
    const ssize_t size = ReadAccessControlList(list.data(), list.size());
    if (size < 0) {
      if (errno != ENODATA && errno != ENOTSUP) mode &= ~static_cast<mode_t>(S_IRWXG);
      fremovexattr(file, kAccessControlList);  // the folder may have given the new file one
      return false;
    }
    if (fsetxattr(file, kAccessControlList, list.data(), static_cast<std::size_t>(size), 0) == 0) return true;
    mode &= ~static_cast<mode_t>(S_IRWXG);
    return false;
  }

  // Writes into the old file itself, and restores it when that fails. `unless` is the reason when it cannot
  // be opened.
  bool WriteInPlace(std::string_view bytes, const std::string& unless, std::string& reason) const {
    const Descriptor old(retry_if_interrupted([&] {
      return openat(folder, name.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    }));
    std::string old_bytes;
    if (!old.is_open() || !read_all(old, old_bytes)) return fail(reason, unless);
    if (overwrite_file(old, bytes)) return true;
    const int error = errno;
    const bool is_restored =
        overwrite_file(old, old_bytes);  // before the reason, for which memory may be missing
    return fail(reason, error_text(error) + (is_restored ? "" : "; the old content could not be restored"));
  }

  bool WriteUnbuffered(std::string_view bytes, std::string& reason) const {
    return write_all(file, bytes) || fail(reason);
  }

  bool Flush(std::string& reason) {
    const bool written = WriteUnbuffered(buffer, reason);
    buffer.clear();
    return written;
  }

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
    // A file that is new is as the umask says.
    const int error = CreateTemporary(exists ? initial_mode(old.st_mode & kPermissionBits) : 0666);
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
    if (size > kBufferSize) return WriteUnbuffered({bytes, size}, reason);
    buffer.append(bytes, size);
    return true;
  }

  bool Commit(std::string& reason) {
    if (is_in_place) return WriteInPlace(buffer, refusal, reason);
    if (!Flush(reason)) return false;
    if (retry_if_interrupted([&] { return fsync(file); }) != 0) return fail(reason);
    if (renameat(folder, temporary.c_str(), folder, name.c_str()) != 0) {
      const bool is_refused = is_folder_error(errno);
      fail(reason);
      std::string bytes;
      return is_refused && read_all(file, bytes) && WriteInPlace(bytes, std::exchange(reason, ""), reason);
    }
    temporary.clear();
    // The new file is in place. Its name should be on disk too, but a failure to flush the folder is not
    // reported.
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
