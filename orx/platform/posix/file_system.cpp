#include <orx/platform/file_system.h>

#include <orx/platform/kept_errno.h>
#include <orx/platform/paths.h>
#include <orx/platform/posix/descriptor.h>
#include <orx/platform/posix/error_text.h>

#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <utility>

namespace orx::platform {
namespace {

constexpr std::size_t kBufferSize = 64 * 1024;
constexpr int kLinksFollowed = 40;         // as many as the system itself follows
constexpr int kTemporaryNamesTried = 100;  // names left behind by processes that were killed
constexpr mode_t kPermissionBits = 0777;

bool failed(std::string& reason, std::string text = error_text(errno)) {
  reason = std::move(text);
  return false;
}

// A name of its own length, so that one of full length can be replaced too.
std::string temporary_name() {
  static std::atomic<unsigned> counter = 0;
  char name[32];
  std::snprintf(name, sizeof name, ".orx-%08x-%08x.tmp", static_cast<unsigned>(getpid()), ++counter);
  return name;
}

// What a new file may be at first, so that its content is never open to more people than the old one's: until
// the owner has been set, its group may be another.
mode_t safe_mode(mode_t old) {
  const mode_t of_group = old >> 3 & 07;
  const mode_t of_others = old & 07;
  return (of_group & ~of_others) == 0 ? old : old & 0700;
}

void keep_owner(int file, const struct stat& old) {
  if (fchown(file, old.st_uid, old.st_gid) == 0) return;
  // Only the administrator may give files away; a group of one's own is worth keeping all the same.
  [[maybe_unused]] const int ignored = fchown(file, static_cast<uid_t>(-1), old.st_gid);
}

}  // namespace

EntryKind entry_kind(const char* path) {
  const KeptErrno kept;
  struct stat status;
  if (stat(system_path(path).c_str(), &status) != 0) return EntryKind::kNone;
  return S_ISDIR(status.st_mode) ? EntryKind::kFolder : EntryKind::kFile;
}

std::optional<std::uint64_t> readable_size(const char* path) {
  const KeptErrno kept;
  const std::string name = system_path(path);
  struct stat status;
  if (stat(name.c_str(), &status) != 0 || S_ISDIR(status.st_mode) || S_ISSOCK(status.st_mode)) return {};
  // Opening a pipe waits for its other end, or sets that going; opening a device may do anything.
  if (!S_ISREG(status.st_mode)) {
    if (faccessat(AT_FDCWD, name.c_str(), R_OK, AT_EACCESS) != 0) return {};
    return 0;
  }
  constexpr int kFlags = O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  const Descriptor file(uninterrupted([&] { return open(name.c_str(), kFlags); }));
  // A file that another process has taken a lease on can be opened as well, once it has been asked for.
  if (!file.is_open() && errno != EWOULDBLOCK) return {};
  if (file.is_open() && fstat(file, &status) != 0) return {};  // what a server says now
  return static_cast<std::uint64_t>(status.st_size);
}

std::uint64_t free_space(const char* folder) {
  const KeptErrno kept;
  const std::string name = system_path(folder);
  struct statvfs volume;
  // The slash refuses what is no folder.
  const auto ask = [&] { return statvfs((name + '/').c_str(), &volume); };
  if (name.empty() || uninterrupted(ask) != 0 || volume.f_frsize == 0) return 0;
  const std::uint64_t blocks = std::min<std::uint64_t>(volume.f_bavail, UINT64_MAX / volume.f_frsize);
  return blocks * volume.f_frsize;
}

// All names are taken in the folder that was opened, wherever the process or the folder moves meanwhile.
struct FileReplacement::State {
  Descriptor folder;
  Descriptor file;
  std::string name;
  std::string temporary;  // empty: there is none (any more)
  std::string buffer;

  ~State() {
    if (!temporary.empty()) unlinkat(folder, temporary.c_str(), 0);
  }

  // Finds the folder and the old file behind a path, through links that need not lead to anything yet. The
  // links on the way to the name at its end are the system's business.
  bool Locate(std::string path, struct stat& old, bool& exists, std::string& reason) {
    for (int followed = 0; followed <= kLinksFollowed; ++followed) {
      const std::size_t name_at = path.rfind('/') + 1;
      name = path.substr(name_at);
      if (name.empty()) return failed(reason, error_text(path.empty() ? ENOENT : EISDIR));
      if (!OpenFolder(name_at == 0 ? "." : path.substr(0, name_at).c_str(), reason)) return false;
      exists = fstatat(folder, name.c_str(), &old, AT_SYMLINK_NOFOLLOW) == 0;
      if (!exists) return errno == ENOENT || failed(reason);
      if (!S_ISLNK(old.st_mode)) return true;
      char target[PATH_MAX];
      const ssize_t size = readlinkat(folder, name.c_str(), target, sizeof target);
      if (size < 0) return failed(reason);
      path.replace(target[0] == '/' ? 0 : name_at, std::string::npos, target, static_cast<std::size_t>(size));
    }
    return failed(reason, error_text(ELOOP));
  }

  bool OpenFolder(const char* path, std::string& reason) {
    folder = Descriptor(open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    // A folder that may be written but not read is good enough: only its flush fails.
    if (!folder.is_open() && errno == EACCES)
      folder = Descriptor(open(path, O_PATH | O_DIRECTORY | O_CLOEXEC));
    return folder.is_open() || failed(reason);
  }

  // The old file is never opened: one that is a pipe would block.
  bool CheckOld(const struct stat& old, std::string& reason) const {
    if (S_ISDIR(old.st_mode)) return failed(reason, error_text(EISDIR));
    if (!S_ISREG(old.st_mode)) return failed(reason, "Not a regular file");
    if (old.st_uid == geteuid() && (old.st_mode & S_IWUSR) != 0)
      return true;  // by far the most, and at no cost
    return faccessat(folder, name.c_str(), W_OK, AT_EACCESS) == 0 || failed(reason);
  }

  bool CreateTemporary(mode_t mode, std::string& reason) {
    constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW;
    for (int tried = 0; tried < kTemporaryNamesTried; ++tried) {
      std::string candidate = temporary_name();
      file = Descriptor(uninterrupted([&] { return openat(folder, candidate.c_str(), kFlags, mode); }));
      if (file.is_open()) {
        temporary = std::move(candidate);
        return true;
      }
      if (errno != EEXIST) break;
    }
    return failed(reason);
  }

  // The owner goes first: changing it can take permissions away.
  bool TakeOver(const struct stat& old, std::string& reason) const {
    struct stat status;
    if (fstat(file, &status) != 0) return failed(reason);
    const bool is_owners = status.st_uid == old.st_uid && status.st_gid == old.st_gid;
    if (!is_owners) keep_owner(file, old);
    if (is_owners && status.st_mode == old.st_mode) return true;
    return fchmod(file, old.st_mode & kPermissionBits) == 0 || failed(reason);
  }

  bool WriteThrough(std::string_view bytes, std::string& reason) const {
    return write_all(file, bytes) || failed(reason);
  }

  bool Flush(std::string& reason) {
    const bool written = WriteThrough(buffer, reason);
    buffer.clear();
    return written;
  }

  bool Open(const char* path, std::string& reason) {
    struct stat old;
    bool exists = false;
    if (!Locate(system_path(path), old, exists, reason)) return false;
    if (exists && !CheckOld(old, reason)) return false;
    // A file that is new is as the umask says.
    if (!CreateTemporary(exists ? safe_mode(old.st_mode & kPermissionBits) : 0666, reason)) return false;
    buffer.reserve(kBufferSize);
    return !exists || TakeOver(old, reason);
  }

  bool Write(const char* bytes, std::size_t size, std::string& reason) {
    if (buffer.size() + size > kBufferSize && !Flush(reason)) return false;
    if (size > kBufferSize) return WriteThrough({bytes, size}, reason);
    buffer.append(bytes, size);
    return true;
  }

  bool Commit(std::string& reason) {
    if (!Flush(reason)) return false;
    if (uninterrupted([&] { return fsync(file); }) != 0) return failed(reason);
    if (renameat(folder, temporary.c_str(), folder, name.c_str()) != 0) return failed(reason);
    temporary.clear();
    // The new file is in place; that its name is on disk too is worth an attempt, but no failure any more.
    uninterrupted([&] { return fsync(folder); });
    return true;
  }
};

FileReplacement::FileReplacement() = default;

FileReplacement::~FileReplacement() {
  const KeptErrno kept;
  state_.reset();
}

bool FileReplacement::Open(const char* path, std::string& reason) {
  const KeptErrno kept;
  state_.reset();
  auto state = std::make_unique<State>();
  if (!state->Open(path, reason)) return false;
  state_ = std::move(state);
  return true;
}

bool FileReplacement::Write(const void* bytes, std::size_t size, std::string& reason) {
  const KeptErrno kept;
  std::unique_ptr<State> state = std::move(state_);
  if (state == nullptr) return failed(reason, "No file is open");
  if (!state->Write(static_cast<const char*>(bytes), size, reason)) return false;
  state_ = std::move(state);
  return true;
}

bool FileReplacement::Commit(std::string& reason) {
  const KeptErrno kept;
  const std::unique_ptr<State> state = std::move(state_);
  if (state == nullptr) return failed(reason, "No file is open");
  return state->Commit(reason);
}

bool remove_file(const char* path) {
  const KeptErrno kept;
  return unlink(system_path(path).c_str()) == 0;
}

}  // namespace orx::platform
