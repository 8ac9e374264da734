#include <orx/platform/dom_rules.h>

#include <orx/base/utf8.h>

#include <algorithm>
#include <array>

namespace orx::platform::dom {
namespace {

constexpr std::string_view kXmlns = "xmlns";

// The two characters of the basic plane, besides controls and surrogates, that XML does not allow.
constexpr std::string_view kUtf8FFFE = "\xEF\xBF\xBE";
constexpr std::string_view kUtf8FFFF = "\xEF\xBF\xBF";

struct CharacterRange {
  char32_t first;
  char32_t last;
};

// The characters of names in XML 1.0, except the colon, which separates a prefix. A name begins with a
// character of the first table. The rest may be of both tables.
constexpr CharacterRange kNameStart[] = {
    {'A', 'Z'},       {'_', '_'},       {'a', 'z'},       {0xC0, 0xD6},     {0xD8, 0xF6},
    {0xF8, 0x2FF},    {0x370, 0x37D},   {0x37F, 0x1FFF},  {0x200C, 0x200D}, {0x2070, 0x218F},
    {0x2C00, 0x2FEF}, {0x3001, 0xD7FF}, {0xF900, 0xFDCF}, {0xFDF0, 0xFFFD}, {0x10000, 0xEFFFF},
};
constexpr CharacterRange kNameRest[] = {
    {'-', '.'}, {'0', '9'}, {0xB7, 0xB7}, {0x300, 0x36F}, {0x203F, 0x2040},
};

enum class NameRole : unsigned char { kNone, kRest, kStart };

constexpr NameRole role_of(char32_t c) {
  const auto holds = [c](const CharacterRange& range) { return range.first <= c && c <= range.last; };
  if (std::ranges::any_of(kNameStart, holds)) return NameRole::kStart;
  return std::ranges::any_of(kNameRest, holds) ? NameRole::kRest : NameRole::kNone;
}

// The roles of ASCII characters as a table, since most names are ASCII.
constexpr auto kAsciiRoles = [] {
  std::array<NameRole, 128> places{};
  for (char32_t c = 0; c < places.size(); ++c) places[c] = role_of(c);
  return places;
}();

// Removes the first character of a valid text that is not empty, and returns its role.
NameRole take_role(std::string_view& text) {
  const auto byte = static_cast<unsigned char>(text.front());
  if (byte >= kAsciiRoles.size()) return role_of(utf8::take_first(text));
  text.remove_prefix(1);
  return kAsciiRoles[byte];
}

bool is_forbidden(char c) {
  return static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r';
}

// Whether XML allows all characters of the text, so that it can be read again. The first loop has no branch:
// the compiler turns it into vector instructions. Most texts need no other check.
bool is_text(std::string_view text) {
  bool has_low = false;
  bool has_high = false;
  for (const char c : text) {
    has_low |= static_cast<unsigned char>(c) < 0x20;
    has_high |= static_cast<unsigned char>(c) >= 0x80;
  }
  if (has_low && std::ranges::any_of(text, is_forbidden)) return false;
  if (!has_high) return true;
  const bool has_noncharacter = text.find(kUtf8FFFE) != text.npos || text.find(kUtf8FFFF) != text.npos;
  return utf8::is_valid(text) && !has_noncharacter;
}

// The size of the text when it is written, for a comparison with kMaxTextBytes. Each character that may be
// escaped counts as the longest escape. A text that cannot exceed the limit is not searched, and gives its
// own size.
std::size_t size_when_written(std::string_view text) {
  constexpr std::size_t kLongestEscape = 6;
  if (text.size() <= kMaxTextBytes / kLongestEscape) return text.size();
  const auto escaped = std::ranges::count_if(
      text, [](char c) { return std::string_view("\t\n\r<>&\"").find(c) != std::string_view::npos; });
  return text.size() + (kLongestEscape - 1) * static_cast<std::size_t>(escaped);
}

bool is_reserved_namespace(std::string_view uri) {
  return uri == "http://www.w3.org/XML/1998/namespace" || uri == "http://www.w3.org/2000/xmlns/";
}

}  // namespace

bool refuse(std::string& reason, const char* why) {
  reason = why;
  return false;
}

bool is_plain_name(std::string_view text) {
  if (text.empty() || !utf8::is_valid(text)) return false;
  if (take_role(text) != NameRole::kStart) return false;
  while (!text.empty()) {
    if (take_role(text) == NameRole::kNone) return false;
  }
  return true;
}

bool accept_name(std::string_view name, std::string& reason) {
  if (name.size() > kMaxNameBytes) return refuse(reason, "the name is too long");
  const std::size_t colon = name.find(':');
  const bool has_prefix = colon != std::string_view::npos;
  const std::string_view prefix = name.substr(0, colon);  // the whole name when there is no colon
  if (is_plain_name(prefix) && (!has_prefix || is_plain_name(name.substr(colon + 1)))) return true;
  if (!is_text(name)) return refuse(reason, "the name is not a valid XML name");
  reason = "\"" + std::string(name) + "\" is not a valid XML name";
  return false;
}

bool accept_text(std::string_view text, std::string& reason) {
  if (size_when_written(text) > kMaxTextBytes)
    return refuse(reason, "the text is larger than 9.9 MB when it is written");
  if (is_text(text)) return true;
  return refuse(reason, "the text holds characters that XML does not allow, or is not valid UTF-8");
}

bool accept_query(std::string_view query, std::string& reason) {
  if (query.size() > kMaxQueryBytes) return refuse(reason, "the query is longer than 64 KiB");
  if (is_text(query)) return true;
  return refuse(reason, "the query holds characters that XML does not allow, or is not valid UTF-8");
}

bool accept_value(std::string_view attribute, std::string_view value, std::string& reason) {
  if (!accept_text(value, reason)) return false;
  if (!declares_namespace(attribute)) return true;
  const bool has_prefix = attribute != kXmlns;
  const std::string_view prefix = has_prefix ? attribute.substr(kXmlns.size() + 1) : "";
  const bool is_reserved = prefix == "xml" || prefix == kXmlns || is_reserved_namespace(value);
  const bool undeclares_prefix = has_prefix && value.empty();
  if (is_reserved || undeclares_prefix)
    return refuse(reason, "XML does not allow this declaration of a namespace");
  return is_supported_namespace(value) || refuse(reason, kUnsupportedNamespace);
}

bool is_supported_namespace(std::string_view uri) { return uri.find('&') == std::string_view::npos; }

bool declares_namespace(std::string_view name) {
  return name.starts_with(kXmlns) && (name.size() == kXmlns.size() || name[kXmlns.size()] == ':');
}

}  // namespace orx::platform::dom
