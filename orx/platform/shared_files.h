// Folders and logs that the users of the machine share. Paths are the suite's, see paths.h.
//
// What is made here may be used by everybody who may use the folder that it is made in, whatever the process
// takes away from new files otherwise: a backend passes the folder's rights, and its group, on.
//
// A shared folder is open to attacks: another user may plant a link that leads to a file of this user. A log
// is therefore refused if only another user can have put it there, see posix/shared_files.cpp.
#pragma once

#include <string_view>

namespace orx::platform {

// Each is false when it could not be done, or when something is there already and cannot be used.
//
// Makes one level; the folders above it must exist.
bool create_shared_folder(const char* path);

// Both make a file that does not exist, and wait for nobody, so a pipe without a reader is refused. Bytes are
// appended in one piece, before or after those that other processes append, but never among them; only when
// the disk has no space for all of them, some may stay.
bool clear_log(const char* path);
bool append_to_log(const char* path, std::string_view bytes);

}  // namespace orx::platform
