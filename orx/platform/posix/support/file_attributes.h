// Constants of the system's files that several sources of the backend use.
#pragma once

#include <sys/types.h>

namespace orx::platform {

// The links that the system follows in one path.
inline constexpr int kMaxLinks = 40;

// What users may do with a file, without the bits S_ISUID, S_ISGID and S_ISVTX.
inline constexpr mode_t kPermissionBits = 0777;

// The extended attribute that holds the access control list of a file.
inline constexpr char kAccessControlList[] = "system.posix_acl_access";

}  // namespace orx::platform
