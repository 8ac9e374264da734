#include <orx/platform/posix/registry/names.h>

#include <orx/base/utf8.h>
#include <orx/platform/posix/support/letter_case.h>

#include <algorithm>

namespace orx::platform {

bool fold_name(std::string_view name, std::size_t max_characters, std::string& folded) {
  const auto continuations = static_cast<std::size_t>(std::ranges::count_if(name, utf8::is_continuation));
  const std::size_t characters = name.size() - continuations;
  return characters <= max_characters && to_capitals(name, folded);
}

std::string_view take_level(std::string_view& path) {
  const std::string_view level = path.substr(0, path.find('\\'));
  path.remove_prefix(level.size());
  path.remove_prefix(std::min(path.find_first_not_of('\\'), path.size()));
  return level;
}

}  // namespace orx::platform
