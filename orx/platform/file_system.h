// Queries about files, and the replacement of whole files. Paths are the suite's, see paths.h; null and the
// empty path name nothing. Any thread may call these functions.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace orx::platform {

enum class EntryKind {
  kNone,  // nothing exists there, or its status cannot be read
  kFile,  // anything but a folder
  kFolder
};

// Links are followed.
EntryKind entry_kind(const char* path);

// The size in bytes of a file that this user can open for reading; 0 for a pipe or a device. Empty for a
// folder, and when the file cannot be opened. Does not wait for the other end of a pipe, and does not wake
// it.
std::optional<std::uint64_t> readable_size(const char* path);

// The size in bytes of a file. The last name of the pattern may have the wildcards * and ?. Then the result
// is the size of the first match, in the order of the names without regard to letter case. "." and ".." match
// too, before all other names, except in the root of a drive. The size of a folder is 0, and so is the result
// when nothing matches.
std::uint64_t first_match_size(const char* pattern);

// The bytes that this user may still write to the volume of a folder; 0 when there is no such folder or the
// volume does not say.
std::uint64_t free_space(const char* folder);

// Replaces the content of a file as a whole, or creates the file.
//
// The content goes to a temporary file in the same folder, with a random name. Commit flushes the temporary
// file to disk and renames it to the name of the old file. The new file has the old file's permissions and
// access control list and, as far as this user may set it, its owner. A link stays, and its target is
// replaced. Until Commit succeeds, the old file is unchanged.
//
// A failure and the destructor remove the temporary file. After a kill, the next replacement of the same file
// removes it, unless the folder has more than some thousand entries or the file system has no locks.
//
// Where the folder refuses the temporary file or the rename but the file itself is writable (a folder of
// another user, a file that is a mount point), Commit writes into the old file, and restores its content when
// that fails. A power cut or a kill at that moment can leave a file that is half written. A file that this
// user may not write is refused, and so is anything that is not a regular file.
//
// The order of calls is Open, Write any number of times, Commit. Each returns false and sets `reason` when it
// fails: a short English phrase without the path ("No space left on device"). After a failure, Write and
// Commit are refused until the next Open. An object is for one thread at a time.
class FileReplacement {
 public:
  FileReplacement();
  ~FileReplacement();
  FileReplacement(const FileReplacement&) = delete;
  FileReplacement& operator=(const FileReplacement&) = delete;

  // Abandons a replacement that is not committed.
  bool Open(const char* path, std::string& reason);
  bool Write(const void* bytes, std::size_t size, std::string& reason);
  bool Commit(std::string& reason);

 private:
  struct State;
  std::unique_ptr<State> state_;  // null: Write and Commit are refused
};

// Deletes a file, or a link and not its target. False when that fails, as for a folder.
bool remove_file(const char* path);

}  // namespace orx::platform
