#include <orx/frame/file_queries.h>

#include <orx/frame/host_callbacks.h>
#include <orx/platform/code_page.h>
#include <orx/platform/file_system.h>
#include <orx/platform/stack.h>
#include <orx/text/strings.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <exception>

namespace {

using orx::platform::EntryKind;

constexpr int kDriveLetters = 26;

// Returns the result of a query; a default result for a null or empty path and when memory runs out.
template <class Result>
Result query_or_default(Result (*query)(const char*), const char* path) {
  if (path == nullptr || *path == '\0') return {};
  try {
    return query(path);
  } catch (const std::exception&) {
    return {};
  }
}

// The path is cut first: its last backslash is the one at the end of the cut path.
EntryKind kind_of(const char* path) {
  char cut[ORX_QUERY_PATH_LENGTH * orx::platform::kMaxCharacterBytes + 1];
  ORX_strncpy(cut, path, sizeof cut - 1);
  cut[orx::platform::prefix_size(cut, ORX_QUERY_PATH_LENGTH)] = '\0';
  RemoveTrailingBackSlash(cut);
  return query_or_default(orx::platform::entry_kind, cut);
}

}  // namespace

int FileExists(const char* path) { return kind_of(path) == EntryKind::kFile ? 1 : 0; }

int DirectoryExists(const char* path) { return kind_of(path) == EntryKind::kFolder ? 1 : 0; }

void RemoveTrailingBackSlash(char* path) {
  if (path == nullptr || *path == '\0') return;
  char* const last = path + std::strlen(path) - 1;
  if (*last == '\\') *last = '\0';
}

int file_exists(const char* path) {
  return query_or_default(orx::platform::readable_size, path).has_value() ? 1 : 0;
}

uint32_t get_file_length(const char* path) {
  const std::uint64_t size = query_or_default(orx::platform::first_match_size, path);
  return static_cast<uint32_t>(size);
}

int32_t GetFilesize(const char* path) {
  const std::uint64_t size = query_or_default(orx::platform::readable_size, path).value_or(0);
  return size <= INT32_MAX ? static_cast<int32_t>(size) : -1;
}

int diskspace(int drive) {
  if (drive < 0 || drive > kDriveLetters) return 0;
  const char root[] = {static_cast<char>('A' + drive - 1), ':', '\\', '\0'};
  const uint64_t space = GetDiskSpaceByDriveName(drive == 0 ? nullptr : root);
  return static_cast<int>(std::min<uint64_t>(space, INT32_MAX));
}

uint64_t GetDiskSpaceByDriveName(const char* path) {
  return query_or_default(orx::platform::free_space, path != nullptr ? path : ".");
}

void no_disk_space() {
  ShowError(
      "You have run out of space on your data disk.\nPlease free some disk space and re-run\nthe system. "
      "Thank you.");
  std::exit(1);
}

size_t stackavail() { return orx::platform::stack_left(); }
