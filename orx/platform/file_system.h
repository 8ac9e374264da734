// What the library asks of files. Paths are the suite's, see paths.h. Reasons of failures are short phrases
// without the path ("No space left on device").
#pragma once

#include <cstddef>
#include <memory>
#include <string>

namespace orx::platform {

enum class EntryKind {
  kNone,
  kFile,
  kFolder
};  // kNone also when the status can't be had; kFile for all but folders

EntryKind entry_kind(const char* path);

// Replaces a file as a whole, or creates it: what is written goes to a temporary file in the same folder, and
// Commit flushes it to disk and puts it in the place of the old one, with the old one's permissions. A link
// stays, its target is replaced. Until Commit has succeeded the old file is untouched; if it never does,
// nothing is left behind. A file that may not be written, and anything that is not a file, is refused.
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

}  // namespace orx::platform
