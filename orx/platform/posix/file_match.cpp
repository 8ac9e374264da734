#include <orx/base/ascii.h>
#include <orx/base/errno_guard.h>
#include <orx/base/utf8.h>
#include <orx/platform/file_system.h>
#include <orx/platform/posix/drive_path.h>
#include <orx/platform/posix/support/directory.h>
#include <orx/platform/posix/support/letter_case.h>

#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

namespace orx::platform {
namespace {

// The name in capitals. In a name that is not valid UTF-8, only ASCII letters change.
std::string upper_case_name(std::string_view name) {
  std::string result(name);
  if (!to_capitals(name, result)) std::ranges::transform(result, result.begin(), to_upper);
  return result;
}

// The position after the character at `at`.
std::size_t next_character(std::string_view text, std::size_t at) {
  do ++at;
  while (at < text.size() && utf8::is_continuation(text[at]));
  return at;
}

// "*" matches any text. "?" matches one character, or nothing if a point follows in the name or the name ends
// there.
//
// The loop matches from left to right and first lets each star match nothing. On a mismatch it goes back to
// the last star and lets it match one character more. Earlier stars need no second try: a longer match of an
// earlier star leaves the last one less of the name to choose from. So the time is at most the product of the
// two lengths, whatever the pattern.
bool matches_exactly(std::string_view pattern, std::string_view name) {
  std::size_t in_pattern = 0;
  std::size_t at = 0;
  std::size_t star = std::string_view::npos;  // the position of the last star in the pattern so far
  std::size_t star_end = 0;                   // the end of the text in the name that this star matches
  while (at < name.size()) {
    const char wanted = in_pattern < pattern.size() ? pattern[in_pattern] : '\0';
    if (wanted == '*') {
      star = in_pattern;
      star_end = at;
      ++in_pattern;
    } else if (wanted == '?') {
      ++in_pattern;
      if (name[at] != '.') at = next_character(name, at);
    } else if (wanted == name[at]) {
      ++in_pattern;
      ++at;
    } else if (star != std::string_view::npos) {
      in_pattern = star + 1;
      star_end = next_character(name, star_end);
      at = star_end;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of("*?", in_pattern) == std::string_view::npos;
}

// A name without a point also matches as if it ended in a point: "pit.*" and "pit." match pit.
bool matches(std::string_view pattern, const std::string& name) {
  return matches_exactly(pattern, name) ||
         (name.find('.') == std::string::npos && matches_exactly(pattern, name + '.'));
}

// Whether a folder is the root of the system, or of a drive: a folder with a name of one letter in the drive
// folder.
bool is_root(std::string_view folder, bool is_drive_folder) {
  return folder == "/" || (is_drive_folder && folder.size() == std::strlen("/c/"));
}

// The name of the first entry that matches, in the order of names without regard to letter case; empty when
// no entry matches. The folder lists its entries in any order, so all are read, unless "." or ".." matches.
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
    // Names that differ only in letter case are ordered by their bytes, so that the result is always the
    // same.
    const bool is_later = std::tie(first, first_name) < std::tie(candidate, name);
    if (!first_name.empty() && is_later) continue;
    first = candidate;
    first_name = name;
  }
  return first_name;
}

// 0 for a folder, a pipe or a device.
std::uint64_t size_of(const struct stat& status) {
  return S_ISREG(status.st_mode) ? static_cast<std::uint64_t>(status.st_size) : 0;
}

}  // namespace

std::uint64_t first_match_size(const char* pattern) {
  const ErrnoGuard errno_guard;
  SystemPath path = parse_path(pattern);
  struct stat status;
  // The drive folder's own path may contain a * or ?, which is not a wildcard there. parse_path has removed a
  // prefix with "?".
  const std::size_t wildcard = path.name.find_first_of("*?", path.drive_folder_length);
  if (wildcard == std::string::npos) {
    const bool exists = on_path(path, [&](const char* name) { return stat(name, &status); }) == 0;
    return exists ? size_of(status) : 0;
  }
  const std::size_t name_at = path.name.rfind('/') + 1;
  const std::string name = path.name.substr(name_at);
  if (wildcard < name_at || name.size() > NAME_MAX) return 0;
  path.name.resize(name_at);
  if (path.name.empty()) path.name = ".";
  Directory folder;
  const auto open_folder = [&](const char* candidate) {
    folder.reset(opendir(candidate));
    return folder != nullptr ? 0 : -1;
  };
  if (on_path(path, open_folder) != 0) return 0;
  const std::string_view below = std::string_view(path.name).substr(path.drive_folder_length);
  const std::string match = first_match(folder.get(), name, is_root(below, path.drive_folder_length > 0));
  const bool exists =
      fstatat(dirfd(folder.get()), match.c_str(), &status, 0) == 0;  // false for an empty name
  return exists ? size_of(status) : 0;
}

}  // namespace orx::platform
