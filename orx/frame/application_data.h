// The folder of the suite's own data, for all users of the machine.
//
// It is the value ConfigFolder of the machine's registry key
// SOFTWARE\Halvark Software\TESSEL\6.9.1\INSTALL_PARAMETERS, as it stands there, if it has less than 260
// characters; else Halvark\TESSEL\6.9.1\ in the folder that the environment variable PUBLIC names, with a
// backslash at the end. It is made if need be (of a configured folder the last level alone), found once and
// kept for the life of the process. With neither it is empty, and looked for again by the next call.
#pragma once

#include <orx/compat/export.h>

ORX_C_BEGIN

// At most `size` characters and a NUL behind them, so the buffer holds size + 1 bytes; the rest is filled
// with NULs. A null buffer or a negative size is left alone.
ORX_API void GetApplicationDataPath(char* buffer, int size);

ORX_C_END

#if defined(__cplusplus)

#include <orx/compat/string_a.h>

extern "C" ORX_API void GetApplicationDataPathString(CStringA& path);

#endif
