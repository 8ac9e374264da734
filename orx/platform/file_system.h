// What the library asks of files. Paths are the suite's, see paths.h. Reasons of failures are short phrases
// without the path ("No space left on device").
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace orx::platform {

enum class EntryKind {
  kNone,
  kFile,
  kFolder
};  // kNone also when the status can't be had; kFile for all but folders

EntryKind entry_kind(const char* path);

// The size of a file that can be opened for reading, 0 of a pipe or a device; nothing when it can't, which a
// folder never can. Does not block, and what waits at the other end of a pipe notices nothing.
std::optional<std::uint64_t> readable_size(const char* path);

// The size of the file that a path names, or of the first in the order of names, without regard to letter
// case, that it matches: its last name may have the wildcards * and ?. A folder matches too and has the size
// 0, and so has nothing at all; "." and ".." come first, but a drive's root is without them.
std::uint64_t first_match_size(const char* pattern);

// Bytes that the user may still write on the volume that holds a folder; 0 when that can't be had.
std::uint64_t free_space(const char* folder);

// Replaces a file as a whole, or creates it. The content goes to a temporary file in the same folder, whose
// name cannot be foretold. Commit flushes it to disk and renames it over the old file, with the old file's
// permissions, access control list and, as far as the user may, owner. A link stays and its target is
// replaced. Until Commit succeeds the old file is untouched. After a failure no temporary file is left; after
// a kill the next replacement of the same file removes it, unless the folder has more than some thousand
// entries or the file system has no locks.
//
// Where the folder refuses a replacement but the file may be written (a folder of somebody else, a file
// mounted by itself), Commit writes into the file and restores the old content when that fails. This way is
// not safe against a power cut or a kill. A file that may not be written, and anything that is not a regular
// file, is refused.
class FileReplacement {
 public:
  FileReplacement();
  ~FileReplacement();
  FileReplacement(const FileReplacement&) = delete;
  FileReplacement& operator=(const FileReplacement&) = delete;

  // Each is false with the reason; the calls that follow a failure are refused.
  bool Open(const char* path, std::string& reason);
  bool Write(const void* bytes, std::size_t size, std::string& reason);
  bool Commit(std::string& reason);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

// False when it could not be done.
bool remove_file(const char* path);

}  // namespace orx::platform
