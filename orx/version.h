// The version of the library, for the preprocessor and at run time.
#pragma once

#include <orx/compat/export.h>

#define ORX_VERSION_MAJOR 6
#define ORX_VERSION_MINOR 9
#define ORX_VERSION_PATCH 1

#define ORX_VERSION_TEXT_OF(value) #value
#define ORX_VERSION_TEXT(major, minor, patch) \
  ORX_VERSION_TEXT_OF(major) "." ORX_VERSION_TEXT_OF(minor) "." ORX_VERSION_TEXT_OF(patch)

// The version of the headers as text: "major.minor.patch".
#define ORX_VERSION ORX_VERSION_TEXT(ORX_VERSION_MAJOR, ORX_VERSION_MINOR, ORX_VERSION_PATCH)

// Whether the headers are of this version or a later one; for #if.
#define ORX_VERSION_AT_LEAST(major, minor, patch) \
  (ORX_VERSION_MAJOR > (major) ||                 \
   (ORX_VERSION_MAJOR == (major) &&               \
    (ORX_VERSION_MINOR > (minor) || (ORX_VERSION_MINOR == (minor) && ORX_VERSION_PATCH >= (patch)))))

ORX_C_BEGIN

// The version of the library that the process has loaded, in the form of ORX_VERSION. Belongs to the library
// and is valid as long as the process.
ORX_API const char* orx_version(void);

ORX_C_END
