#include <orx/platform/file_system.h>
#include <orx/platform/kept_errno.h>
#include <orx/platform/paths.h>
#include <orx/platform/posix/utf8.h>

#include <dirent.h>
#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstring>
#include <string_view>
#include <vector>

// Wildcards as the suite's users know them from names of eight and three characters: the extension is a part
// of its own, and what stands for one character may stand for none where a part ends. "pit?.dat" matches
// pit.dat, "pit.*" matches pit, and "*." matches what has no extension.
namespace orx::platform {
namespace {

constexpr char32_t kAnyText = 0x110000;     // *
constexpr char32_t kAnyBase = 0x110001;     // * before a point: not beyond the name's last point
constexpr char32_t kAnyOne = 0x110002;      // ?: none at a point or the end
constexpr char32_t kPointOrEnd = 0x110003;  // . before a wildcard

// Latin, Greek and Cyrillic: what names are written with where the suite is used.
constexpr struct {
  char32_t first, last;
  unsigned step;
  int to_capital;
} kSmallLetters[] = {{'a', 'z', 1, -32},     {0xE0, 0xF6, 1, -32},   {0xF8, 0xFE, 1, -32},
                     {0xFF, 0xFF, 1, 121},   {0x101, 0x12F, 2, -1},  {0x133, 0x137, 2, -1},
                     {0x13A, 0x148, 2, -1},  {0x14B, 0x177, 2, -1},  {0x17A, 0x17E, 2, -1},
                     {0x3B1, 0x3C1, 1, -32}, {0x3C3, 0x3CB, 1, -32}, {0x430, 0x44F, 1, -32},
                     {0x450, 0x45F, 1, -80}};

char32_t capital(char32_t c) {
  for (const auto& [first, last, step, to_capital] : kSmallLetters) {
    if (c < first) break;
    if (c <= last && (c - first) % step == 0) return c + static_cast<char32_t>(to_capital);
  }
  return c;
}

// A name that is not UTF-8 is taken byte by byte.
void put_capitals(std::string_view text, std::u32string& out) {
  out.clear();
  const bool is_valid = utf8::is_valid(text);
  while (!text.empty()) {
    const auto byte = static_cast<unsigned char>(text.front());
    if (byte >= 0x80 && is_valid) {
      out += capital(static_cast<char32_t>(utf8::take_first(text)));
    } else {
      out += capital(byte);
      text.remove_prefix(1);
    }
  }
}

std::u32string compiled(std::string_view pattern) {
  if (pattern == "*.*") return {kAnyText};
  const std::size_t last = pattern.find_last_not_of('.');
  const bool ends_in_point = last + 1 < pattern.size();
  std::u32string result;
  put_capitals(pattern.substr(0, last + 1), result);
  for (std::size_t i = 0; i < result.size(); ++i) {
    const bool is_last = i + 1 == result.size();
    const char32_t next = is_last ? 0 : result[i + 1];
    if (result[i] == '?') result[i] = kAnyOne;
    if (result[i] == '*') result[i] = next == '.' || (is_last && ends_in_point) ? kAnyBase : kAnyText;
    if (result[i] == '.' && (next == '*' || next == '?')) result[i] = kPointOrEnd;
  }
  return result;
}

class Matcher {
 public:
  explicit Matcher(std::string_view pattern)
      : pattern_(compiled(pattern)), matched_(pattern_.size() + 1), behind_(pattern_.size() + 1) {}

  // Goes backwards through the name: matched_[i] tells whether the pattern from i on matches the name from
  // the current place on, and behind_[i] from the next. So no pattern takes more than its length times the
  // name's.
  bool Matches(const std::u32string& name) {
    std::ranges::fill(matched_, false);
    std::ranges::fill(behind_, false);
    std::size_t first = pattern_.size();  // what is before it has not matched anywhere yet
    bool point_is_behind = false;
    for (std::size_t at = name.size() + 1; at-- > 0;) {
      const bool at_end = at == name.size();
      const char32_t c = at_end ? 0 : name[at];
      matched_.swap(behind_);
      matched_.back() = at_end;
      bool is_lost = !at_end;
      for (std::size_t i = pattern_.size(); i-- > 0 && i + 1 >= first;) {
        matched_[i] = MatchesFrom(i, c, at_end, point_is_behind);
        if (matched_[i]) {
          is_lost = false;
          first = std::min(first, i);
        }
      }
      if (is_lost) return false;
      point_is_behind = point_is_behind || c == '.';
    }
    return matched_.front();
  }

 private:
  bool MatchesFrom(std::size_t i, char32_t c, bool at_end, bool point_is_behind) const {
    const bool takes_none = matched_[i + 1];
    const bool takes_one = !at_end && behind_[i + 1];
    const bool takes_more = !at_end && behind_[i];
    switch (pattern_[i]) {
      case kAnyText:
        return takes_none || takes_more;
      case kAnyBase:
        return takes_none || (takes_more && (c != '.' || point_is_behind));
      case kAnyOne:
        return at_end || c == '.' ? takes_none : takes_one;
      case kPointOrEnd:
        return at_end ? takes_none : takes_one && c == '.';
      default:
        return takes_one && c == pattern_[i];
    }
  }

  const std::u32string pattern_;
  std::vector<unsigned char> matched_;
  std::vector<unsigned char> behind_;
};

struct Close {
  void operator()(DIR* folder) const { closedir(folder); }
};

bool is_in_root(std::string_view path) {
  const std::string_view folder = path.substr(0, path.find_last_of("\\/:") + 1);
  const bool is_drive = (folder.size() == 2 || folder.size() == 3) && folder[1] == ':';
  return is_drive || folder == "\\" || folder == "/";
}

// The name of the first entry that matches; empty when there is none.
std::string first_match(DIR* folder, std::string_view pattern, bool is_root) {
  Matcher matcher(pattern);
  std::u32string first, candidate;
  std::string first_name;
  while (const dirent* entry = readdir(folder)) {
    const std::string_view name = entry->d_name;
    const bool is_dot = name == "." || name == "..";
    if (is_dot && is_root) continue;
    put_capitals(name, candidate);
    if (!matcher.Matches(candidate)) continue;
    if (is_dot) return std::string(name);
    // Names that differ in letter case alone keep an order as well.
    const int order = first.compare(candidate);
    if (!first_name.empty() && (order < 0 || (order == 0 && first_name < name))) continue;
    first.swap(candidate);
    first_name = name;
  }
  return first_name;
}

std::uint64_t size_of(int folder, const std::string& name) {
  struct stat status;
  if (fstatat(folder, name.c_str(), &status, 0) != 0 || !S_ISREG(status.st_mode)) return 0;
  return static_cast<std::uint64_t>(status.st_size);
}

}  // namespace

std::uint64_t first_match_size(const char* pattern) {
  const KeptErrno kept;
  const std::string path = system_path(pattern);
  const char* wildcard = std::strpbrk(pattern, "*?");
  if (wildcard == nullptr) return size_of(AT_FDCWD, path);
  const std::size_t name_at = path.rfind('/') + 1;
  const std::string name = path.substr(name_at);
  if (std::strpbrk(wildcard, "\\/") != nullptr || name.size() > NAME_MAX) return 0;
  const std::unique_ptr<DIR, Close> folder(opendir(name_at == 0 ? "." : path.substr(0, name_at).c_str()));
  if (folder == nullptr) return 0;
  return size_of(dirfd(folder.get()), first_match(folder.get(), name, is_in_root(pattern)));
}

}  // namespace orx::platform
