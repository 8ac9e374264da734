// The environment variables of the library.
//
// It reads ORX_DRIVES, ORX_USER_REGISTRY, ORX_MACHINE_REGISTRY, ORX_DEBUG_OUTPUT, HOME, XDG_CONFIG_HOME and
// XDG_DATA_HOME once, all together, in the first call that needs one of them, and keeps their values. Other
// threads of the host may change the environment from then on. PUBLIC is read until the application data
// folder is found (application_data.h). On Windows the variables can be read at any time, and nothing is
// kept.
#pragma once

#include <orx/compat/export.h>

ORX_C_BEGIN

// Reads the variables now: after the host has changed one of them, or early, before it starts threads that
// change the environment. The calls that begin later use the new values; open keys of settings stay open.
// Other threads may be in any call of the library, but none may change the environment during this one. When
// memory runs out, the values stay as they were. The C library reads the time zone (TZ) again, too.
ORX_API void orx_environment_changed(void);

ORX_C_END
