// The environment variables of the library.
//
// The library reads ORX_DRIVES, ORX_USER_REGISTRY, ORX_MACHINE_REGISTRY, ORX_DEBUG_OUTPUT, HOME,
// XDG_CONFIG_HOME and XDG_DATA_HOME together, in the first call that needs one of them, and keeps their
// values. After that call other threads of the host may change the environment. PUBLIC is an exception: it is
// read by each call that looks for the application data folder (application_data.h) until the folder is
// found. On Windows, reading a variable is safe at any time, and no values are kept.
#pragma once

#include <orx/compat/export.h>

ORX_C_BEGIN

// Reads the variables again. Call it after the host has changed one of them, or at the start of a host whose
// threads change the environment. Calls that begin later use the new values; open keys of settings stay open.
// Other threads may be within any call of the library, but no thread may change the environment during this
// call. When memory runs out, the old values stay. The C library reads the time zone (TZ) again, too.
ORX_API void orx_environment_changed(void);

ORX_C_END
