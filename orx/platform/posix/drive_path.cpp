#include <orx/platform/posix/drive_path.h>

#include <orx/platform/posix/support/directory.h>
#include <orx/platform/posix/support/letter_case.h>

#include <sys/stat.h>

#include <algorithm>
#include <string_view>

namespace orx::platform {
namespace {

// Finds the only entry of a folder that has the name in any letter case. Returns 0, ENOENT or ENOTUNIQ.
int find_entry(const std::string& folder, std::string_view name, std::string& entry_name) {
  std::string wanted, capitals;
  if (!to_capitals(name, wanted)) return ENOENT;
  const Directory entries(opendir(folder.c_str()));
  if (entries == nullptr) return ENOENT;
  int found = 0;
  while (const dirent* entry = readdir(entries.get())) {
    if (!to_capitals(entry->d_name, capitals) || capitals != wanted) continue;
    if (++found > 1) return ENOTUNIQ;
    entry_name = entry->d_name;
  }
  return found == 1 ? 0 : ENOENT;
}

bool exists(const std::string& path) {
  struct stat status;
  return lstat(path.c_str(), &status) == 0;
}

}  // namespace

// `found` grows by one separator and one part at a time; `rest` is what follows. Separators are copied as
// they are, so that a name that exists as written comes back unchanged.
int find_in_any_case(SystemPath& path) {
  if (path.drive_folder_length == 0) return ENOENT;
  std::string found = path.name.substr(0, path.drive_folder_length);
  std::string_view rest = std::string_view(path.name).substr(path.drive_folder_length);
  while (!rest.empty()) {
    const std::size_t separators = std::min(rest.find_first_not_of('/'), rest.size());
    found += rest.substr(0, separators);
    rest.remove_prefix(separators);
    const std::string_view part = rest.substr(0, rest.find('/'));
    std::string entry_name(part);
    if (!part.empty() && !exists(found + entry_name)) {
      const int error = find_entry(found, part, entry_name);
      if (error == ENOTUNIQ) return error;
      if (error != 0) break;
    }
    found += entry_name;
    rest.remove_prefix(part.size());
  }
  found += rest;
  if (found == path.name) return ENOENT;
  path.name = std::move(found);
  return 0;
}

}  // namespace orx::platform
