#include <orx/version.h>

const char* orx_version() { return ORX_VERSION; }
