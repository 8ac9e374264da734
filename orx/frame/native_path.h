// Paths between the system and the suite.
//
// The suite writes every path with backslashes, and with drive letters where there are drives; the library's
// functions take and give paths in that form. On POSIX \home\ann\pit1.qpr is /home/ann/pit1.qpr, and
// C:\Projects is the folder c/Projects in the drive folder: $ORX_DRIVES, else $XDG_DATA_HOME/orx/drives, else
// ~/.local/share/orx/drives; \\server\share is unc/server/share there. `\\?\` before such a path is dropped,
// and slashes serve as well; //server/share names a server if the drive folder has it. On Windows both forms
// are the same.
//
// Both functions write at most `size` bytes with the terminating NUL and return 0; or -1, with the output
// empty when there is room for that, when an argument is null, `size` is 0 or the result does not fit.
#pragma once

#include <orx/compat/export.h>

#include <stddef.h>

ORX_C_BEGIN

// Makes the path absolute, against the current directory and without "." and "..", and turns it into the
// suite's form. A path that begins with a backslash or a drive is in that form already and stays as it is.
ORX_API int orx_path_from_native(const char* native, char* out, size_t size);

// Letter case does not matter below a drive or server: where the file exists in another case, the result has
// that case. Returns -1 also for a drive when no drive folder can be found (neither of its variables nor a
// home directory is set).
ORX_API int orx_path_to_native(const char* path, char* out, size_t size);

ORX_C_END
