#include <orx/platform/posix/registry_names.h>

#include <orx/platform/posix/utf8.h>

#include <locale.h>
#include <wctype.h>

#include <algorithm>
#include <memory>

namespace orx::platform {
namespace {

struct FreeText {
  void operator()(BSTR text) const { SysFreeString(text); }
};

bool is_ascii(char c) { return static_cast<unsigned char>(c) < 0x80; }

char upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

bool fold_wide(std::string_view name, std::size_t longest, std::string& folded) {
  // The host's locale may know no letters but ASCII's.
  static const locale_t unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  if (!utf8::is_valid(name)) return false;
  const std::unique_ptr<wchar_t, FreeText> wide(utf8::to_wide(name));
  const std::size_t length = SysStringLen(wide.get());
  if (length > longest) return false;
  if (unicode != nullptr) {
    std::for_each_n(wide.get(), length, [](wchar_t& c) {
      c = static_cast<wchar_t>(towupper_l(static_cast<wint_t>(c), unicode));
    });
  }
  return utf8::from_wide(wide.get(), length, folded);
}

}  // namespace

bool fold_name(std::string_view name, std::size_t longest, std::string& folded) {
  if (!std::ranges::all_of(name, is_ascii)) return fold_wide(name, longest, folded);
  if (name.size() > longest) return false;
  folded = name;
  std::ranges::transform(folded, folded.begin(), upper);
  return true;
}

std::string_view take_level(std::string_view& path) {
  const std::string_view level = path.substr(0, path.find('\\'));
  path.remove_prefix(level.size());
  path.remove_prefix(std::min(path.find_first_not_of('\\'), path.size()));
  return level;
}

}  // namespace orx::platform
