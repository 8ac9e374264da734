// Conversion between paths of the system and paths of the suite.
//
// The suite writes every path with backslashes, and with drive letters where there are drives. The functions
// of the library take and return paths in that form. On POSIX:
//
//   \home\ann\pit1.qpr is /home/ann/pit1.qpr
//   C:\Projects is the folder c/Projects in the drive folder
//   \\server\share is the folder unc/server/share in the drive folder
//
// The drive folder is $ORX_DRIVES, otherwise $XDG_DATA_HOME/orx/drives, otherwise ~/.local/share/orx/drives.
// The prefix `\\?\` before a path is ignored. Slashes mean the same as backslashes, but //server/share names
// a server only if the drive folder has that server. On Windows both forms are the same.
//
// Both functions write at most `size` bytes to `out`, with the terminating NUL, and return 0. They return -1
// if an argument is null, `size` is 0, the result does not fit or memory runs out; `out` is then the empty
// text if it has space for that. `out` may be the buffer of the path. Any thread may call them.
#pragma once

#include <orx/compat/export.h>

#include <stddef.h>

// The size of a buffer for the path of any file that the system can open, in bytes including the NUL.
#define ORX_PATH_SIZE 4096

ORX_C_BEGIN

// Converts a path of the system to the suite's form. The result is made absolute with the current directory
// and has no "." and "..". A path that begins with a backslash or a drive has the suite's form already and is
// returned unchanged.
ORX_API int orx_path_from_native(const char* native, char* out, size_t size);

// Converts a path of the suite to the system's form. Below a drive or a server letter case does not matter:
// the result has the letter case in which the file exists. Also returns -1 for a path with a drive or a
// server when no drive folder can be found, because neither of its variables nor a home folder is set.
ORX_API int orx_path_to_native(const char* path, char* out, size_t size);

ORX_C_END
