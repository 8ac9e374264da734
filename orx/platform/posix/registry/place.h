// Where the two roots of the registry lie.
#pragma once

#include <sys/types.h>

#include <string>

namespace orx::platform {

struct RegistryPlace {
  const char* variable;  // names the file
  const char* file;      // else this one, below the user's configuration if it is relative
  mode_t file_mode;
  mode_t folder_mode;
  bool is_created_to_read;  // not only to write
};

// The user's is nobody else's business; the machine's can be read by all.
inline constexpr RegistryPlace kUserRegistry{"ORX_USER_REGISTRY", "orx/registry.db", 0600, 0700, true};
inline constexpr RegistryPlace kMachineRegistry{"ORX_MACHINE_REGISTRY", "/etc/orx/registry.db", 0644, 0755,
                                                false};

// Empty when the user has no home.
std::string registry_path(const RegistryPlace& place);

// Makes an empty file, with the folders above it, if there is none; 0, or the system's error.
int make_registry_file(const RegistryPlace& place, const std::string& path);

}  // namespace orx::platform
