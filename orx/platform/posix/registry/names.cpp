#include <orx/platform/posix/registry/names.h>

#include <orx/platform/posix/support/utf8.h>

#include <algorithm>

namespace orx::platform {
bool fold_name(std::string_view name, std::size_t longest, std::string& folded) {
  const auto length =
      name.size() - static_cast<std::size_t>(std::ranges::count_if(name, utf8::is_continuation));
  return length <= longest && utf8::to_upper(name, folded);
}

std::string_view take_level(std::string_view& path) {
  const std::string_view level = path.substr(0, path.find('\\'));
  path.remove_prefix(level.size());
  path.remove_prefix(std::min(path.find_first_not_of('\\'), path.size()));
  return level;
}

}  // namespace orx::platform
