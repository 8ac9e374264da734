// Paths with a drive letter or a server, as paths of the system.
//
// Such paths come from Windows, where letter case does not matter. The names in the drive folder, however,
// are files of the system, where it does. So each function that opens a path with a drive tries the name as
// written, which is fast, and searches for the name in other letter case only when it does not exist.
#pragma once

#include <cerrno>
#include <cstddef>
#include <string>

namespace orx::platform {

struct SystemPath {
  std::string name;
  // The length of the drive folder's path, with which `name` begins. 0: a path of the system, whose letter
  // case matters.
  std::size_t drive_folder_length = 0;
};

// Converts a path of the suite, see system_path. Null is the empty path.
SystemPath parse_path(const char* path);

// Gives each part below the drive folder the letter case in which it exists, up to the first part that does
// not exist in any case. Returns 0 if that changed the name and ENOENT if it did not. Returns ENOTUNIQ, and
// leaves the name alone, if a part does not exist as written but in two other letter cases.
int find_in_any_case(SystemPath& path);

// Makes a system call with a path. If the path does not exist, finds it in other letter case and makes the
// call again. The call returns a negative number and sets errno when it fails; errno is ENOTUNIQ when
// find_in_any_case returned that.
template <class Call>
auto on_path(SystemPath& path, Call call) {
  const auto result = call(path.name.c_str());
  if (result >= 0 || errno != ENOENT) return result;
  errno = find_in_any_case(path);
  return errno == 0 ? call(path.name.c_str()) : result;
}

}  // namespace orx::platform
