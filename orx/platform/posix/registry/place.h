// The files of the two roots of the registry.
#pragma once

#include <orx/platform/posix/environment.h>

#include <sys/types.h>

#include <string>

namespace orx::platform {

struct RegistryPlace {
  Variable variable;  // the environment variable that names the file
  const char* file;   // the file without that variable; a relative one is in the user's configuration folder
  mode_t file_mode;   // of a file and of folders that the library creates
  mode_t folder_mode;
  bool is_created_to_read;  // false: only a write creates the file
};

// Only the user may read his own settings; everybody may read those of the machine.
inline constexpr RegistryPlace kUserRegistry{Variable::kUserRegistry, "orx/registry.db", 0600, 0700, true};
inline constexpr RegistryPlace kMachineRegistry{Variable::kMachineRegistry, "/etc/orx/registry.db", 0644,
                                                0755, false};

// The path of the file; empty when the user has no home folder.
std::string registry_path(const RegistryPlace& place);

// Creates an empty file, and the missing folders above it, unless the file exists. Returns 0 or the error
// number.
int make_registry_file(const RegistryPlace& place, const std::string& path);

}  // namespace orx::platform
