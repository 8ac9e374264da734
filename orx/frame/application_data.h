// The application data folder: the folder of the suite's own data, for all users of the machine.
//
// It is the value ConfigFolder of the machine's registry key SOFTWARE\Halvark
// Software\TESSEL\6.9.1\INSTALL_PARAMETERS, unchanged, if the value has at most 260 bytes with its NUL.
// Otherwise it is Halvark\TESSEL\6.9.1\, with a backslash at the end, in the folder that the environment
// variable PUBLIC names. If that path has more than 260 bytes, PUBLIC is ignored. Without either of them the
// folder is the empty text, and the next call looks for it again.
//
// Both functions create the folder if it does not exist; of a configured folder, only the last level.
// Everybody who may use the folder above it may use the new one: it gets the same rights and the same group,
// whatever the umask of the process.
//
// A folder that was found stays the same until the process ends, with one exception: if the machine's
// registry could not be read, because another process has locked it for too long or this process has run out
// of memory or of open files, a call returns the folder from PUBLIC, and the next call looks again.
//
// Any thread may call these functions. They may wait some seconds for another process that writes to the
// machine's registry.
#pragma once

#include <orx/compat/export.h>

// The size in bytes of the longest folder, with its NUL.
#define ORX_APPLICATION_DATA_PATH_SIZE 261

ORX_C_BEGIN

// Writes the folder to `buffer`, which holds size + 1 bytes: at most `size` bytes of the folder, and NULs up
// to the end of the buffer. So a size of ORX_APPLICATION_DATA_PATH_SIZE - 1 never cuts the folder. A null
// buffer and a negative size do nothing.
ORX_API void GetApplicationDataPath(char* buffer, int size);

ORX_C_END

#if defined(__cplusplus)

#include <orx/compat/string_a.h>

// Sets `path` to the folder; to the empty text when memory runs out.
extern "C" ORX_API void GetApplicationDataPathString(CStringA& path);

#endif
