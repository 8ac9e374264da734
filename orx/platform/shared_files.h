// Folders and logs that the users of the machine share. Paths are the suite's, see paths.h.
//
// A new folder or log is open to everybody who may use the folder above it, whatever mask the process applies
// to new files: a backend passes on the rights and the group of that folder.
//
// In a shared folder another user may plant a link that leads to a file of this user, so that this user
// overwrites it. A backend therefore refuses a log that only another user can have put there;
// posix/shared_files.cpp says how it decides.
//
// The functions return false when they fail. They do not wait for other processes, and any thread may call
// them.
#pragma once

#include <string_view>

namespace orx::platform {

// Creates one folder; the folders above it must exist. False also when something with that name exists.
bool create_shared_folder(const char* path);

// Empties a log, or creates it. Of a device or a pipe, only checks that it can be opened for writing; a pipe
// without a reader cannot.
bool clear_log(const char* path);

// Appends bytes to a log, which is created if it does not exist. Bytes that other processes append at the
// same time come before or after these bytes, never between them. When the disk has no space for all of the
// bytes, some of them may stay.
bool append_to_log(const char* path, std::string_view bytes);

}  // namespace orx::platform
