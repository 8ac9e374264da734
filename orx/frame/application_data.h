// The folder of the suite's own data, for all users of the machine.
//
// It is the value ConfigFolder of the machine's registry key
// SOFTWARE\Halvark Software\TESSEL\6.9.1\INSTALL_PARAMETERS, unchanged, if it has less than 260 bytes;
// otherwise Halvark\TESSEL\6.9.1\ in the folder that the environment variable PUBLIC names, with a backslash
// at the end. A PUBLIC that makes the folder longer than 260 bytes is ignored. With neither, the folder is
// empty, and the next call looks for it again.
//
// The folder is made if it does not exist; of a configured folder, only the last level. Whoever may use the
// folder above it may use the new one: it gets the same rights and the same group, whatever the process's
// umask.
//
// A folder that was found is kept for the life of the process, unless the machine's registry could not be
// read (another process held it too long, or the process has no memory or no files left). Then a call answers
// with the folder of PUBLIC, and the next call looks again.
#pragma once

#include <orx/compat/export.h>

ORX_C_BEGIN

// The bytes of the longest folder, with its NUL.
enum { ORX_APPLICATION_DATA_PATH_SIZE = 261 };

// Writes at most `size` bytes and a NUL after them, so the buffer holds size + 1 bytes; the rest is filled
// with NULs. A size of ORX_APPLICATION_DATA_PATH_SIZE - 1 never cuts the folder. Does nothing for a null
// buffer or a negative size.
ORX_API void GetApplicationDataPath(char* buffer, int size);

ORX_C_END

#if defined(__cplusplus)

#include <orx/compat/string_a.h>

// Out of memory gives the empty text.
extern "C" ORX_API void GetApplicationDataPathString(CStringA& path);

#endif
