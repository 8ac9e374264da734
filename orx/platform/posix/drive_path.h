// Paths with a drive letter or a server. They come from Windows, where letter case does not matter, while the
// names in the drive folder are exact.
#pragma once

#include <cerrno>
#include <cstddef>
#include <string>

namespace orx::platform {

struct SystemPath {
  std::string name;
  // The length of the drive folder at the beginning of the name; 0: a path of the system, which is exact.
  std::size_t drive_folder_length = 0;
};

SystemPath parse_path(const char* path);

// Gives each part below the drive folder the letter case in which it exists, up to the first part that does
// not exist. Returns 0 if that changed the name, ENOENT if it did not, ENOTUNIQ when two names fit a part
// that does not exist as written.
int find_in_any_case(SystemPath& path);

// Makes a system call with a path, and once more with the name as it exists when the first one does not find
// it. The call returns a negative number and sets errno when it fails.
template <class Call>
auto on_path(SystemPath& path, Call call) {
  const auto result = call(path.name.c_str());
  if (result >= 0 || errno != ENOENT) return result;
  errno = find_in_any_case(path);
  return errno == 0 ? call(path.name.c_str()) : result;
}

}  // namespace orx::platform
