#include <orx/base/ascii.h>
#include <orx/base/errno_guard.h>
#include <orx/platform/file_system.h>
#include <orx/platform/posix/drive_path.h>
#include <orx/platform/posix/support/utf8.h>

#include <dirent.h>
#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

namespace orx::platform {
namespace {

// Of a name that is not valid in the encoding, only what is ASCII.
std::string upper_case_name(std::string_view name) {
  std::string result(name);
  if (!utf8::to_upper(name, result)) std::ranges::transform(result, result.begin(), to_upper);
  return result;
}

// Behind the character at a place.
std::size_t next_character(std::string_view text, std::size_t at) {
  do ++at;
  while (at < text.size() && utf8::is_continuation(text[at]));
  return at;
}

// "*" stands for any text, "?" for one character, but for none before a point and at the end.
bool matches_exactly(std::string_view pattern, std::string_view name) {
  std::size_t in_pattern = 0, at = 0;
  std::size_t star = std::string_view::npos;  // the last one that was met
  std::size_t star_end = 0;                   // where its text ends
  while (at < name.size()) {
    const char wanted = in_pattern < pattern.size() ? pattern[in_pattern] : '\0';
    if (wanted == '*') {
      star = in_pattern++;
      star_end = at;
    } else if (wanted == '?') {
      ++in_pattern;
      if (name[at] != '.') at = next_character(name, at);
    } else if (wanted == name[at]) {
      ++in_pattern;
      ++at;
    } else if (star != std::string_view::npos) {
      in_pattern = star + 1;
      at = star_end = next_character(name, star_end);
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of("*?", in_pattern) == std::string_view::npos;
}

// A name without a point has one at its end as well: "pit.*" and "pit." match pit.
bool matches(std::string_view pattern, const std::string& name) {
  return matches_exactly(pattern, name) ||
         (name.find('.') == std::string::npos && matches_exactly(pattern, name + '.'));
}

struct Close {
  void operator()(DIR* folder) const { closedir(folder); }
};

// Of the system, or of a drive, which is a folder with a name of one letter.
bool is_root(std::string_view folder, bool is_drive_folder) {
  return folder == "/" || (is_drive_folder && folder.size() == std::strlen("/c/"));
}

// The name of the first entry that matches; empty when there is none.
std::string first_match(DIR* folder, std::string_view wildcards, bool skips_dots) {
  const std::string pattern = upper_case_name(wildcards);
  std::string first, first_name;
  while (const dirent* entry = readdir(folder)) {
    const std::string name = entry->d_name;
    const bool is_dot = name == "." || name == "..";
    if (is_dot && skips_dots) continue;
    const std::string candidate = upper_case_name(name);
    if (!matches(pattern, candidate)) continue;
    if (is_dot) return name;
    // Names that differ in letter case alone keep an order as well.
    if (!first_name.empty() && std::tie(first, first_name) < std::tie(candidate, name)) continue;
    first = candidate;
    first_name = name;
  }
  return first_name;
}

std::uint64_t size_of(const struct stat& status) {
  return S_ISREG(status.st_mode) ? static_cast<std::uint64_t>(status.st_size) : 0;
}

}  // namespace

std::uint64_t first_match_size(const char* pattern) {
  const ErrnoGuard errno_guard;
  SystemPath path = parse_path(pattern);
  struct stat status;
  // Neither a prefix of the pattern nor the drive folder has wildcards.
  const std::size_t wildcard = path.name.find_first_of("*?", path.drive_folder_length);
  if (wildcard == std::string::npos) {
    return on_path(path, [&](const char* name) { return stat(name, &status); }) == 0 ? size_of(status) : 0;
  }
  const std::size_t name_at = path.name.rfind('/') + 1;
  const std::string name = path.name.substr(name_at);
  if (wildcard < name_at || name.size() > NAME_MAX) return 0;
  path.name.resize(name_at);
  if (path.name.empty()) path.name = ".";
  std::unique_ptr<DIR, Close> folder;
  const auto open_folder = [&](const char* candidate) {
    folder.reset(opendir(candidate));
    return folder != nullptr ? 0 : -1;
  };
  if (on_path(path, open_folder) != 0) return 0;
  const std::string_view below = std::string_view(path.name).substr(path.drive_folder_length);
  const std::string match = first_match(folder.get(), name, is_root(below, path.drive_folder_length > 0));
  return fstatat(dirfd(folder.get()), match.c_str(), &status, 0) == 0 ? size_of(status) : 0;
}

}  // namespace orx::platform
