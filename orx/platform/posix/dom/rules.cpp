#include <orx/platform/posix/dom/rules.h>

#include <orx/platform/posix/support/utf8.h>

#include <algorithm>
#include <array>

namespace orx::platform::dom {
namespace {

constexpr std::string_view kXmlns = "xmlns";

struct CharacterRange {
  char32_t first;
  char32_t last;
};

// The characters of names in XML 1.0, without the colon that separates a prefix: those that a name may begin
// with, and those that it may not.
constexpr CharacterRange kNameStart[] = {
    {'A', 'Z'},       {'_', '_'},       {'a', 'z'},       {0xC0, 0xD6},     {0xD8, 0xF6},
    {0xF8, 0x2FF},    {0x370, 0x37D},   {0x37F, 0x1FFF},  {0x200C, 0x200D}, {0x2070, 0x218F},
    {0x2C00, 0x2FEF}, {0x3001, 0xD7FF}, {0xF900, 0xFDCF}, {0xFDF0, 0xFFFD}, {0x10000, 0xEFFFF},
};
constexpr CharacterRange kNameRest[] = {
    {'-', '.'}, {'0', '9'}, {0xB7, 0xB7}, {0x300, 0x36F}, {0x203F, 0x2040},
};

enum class NamePlace : unsigned char { kNone, kRest, kStart };

constexpr NamePlace place_of(char32_t c) {
  const auto holds = [c](const CharacterRange& range) { return range.first <= c && c <= range.last; };
  if (std::ranges::any_of(kNameStart, holds)) return NamePlace::kStart;
  return std::ranges::any_of(kNameRest, holds) ? NamePlace::kRest : NamePlace::kNone;
}

// Most names are ASCII.
constexpr auto kAsciiPlaces = [] {
  std::array<NamePlace, 128> places{};
  for (char32_t c = 0; c < places.size(); ++c) places[c] = place_of(c);
  return places;
}();

NamePlace take_place(std::string_view& text) {
  const auto byte = static_cast<unsigned char>(text.front());
  if (byte >= kAsciiPlaces.size()) return place_of(utf8::take_first(text));
  text.remove_prefix(1);
  return kAsciiPlaces[byte];
}

bool is_forbidden(char c) {
  return static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r';
}

// Whether a document that holds the text can be read again. The first loop has no early end, so that the
// compiler takes many characters at a time; most texts need no other.
bool is_text(std::string_view text) {
  bool has_low = false;
  bool has_high = false;
  for (const char c : text) {
    has_low |= static_cast<unsigned char>(c) < 0x20;
    has_high |= static_cast<unsigned char>(c) >= 0x80;
  }
  if (has_low && std::ranges::any_of(text, is_forbidden)) return false;
  return !has_high || (utf8::is_valid(text) && text.find("\xEF\xBF\xBE") == text.npos &&
                       text.find("\xEF\xBF\xBF") == text.npos);
}

std::size_t written_size(std::string_view text) {
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
  if (take_place(text) != NamePlace::kStart) return false;
  while (!text.empty()) {
    if (take_place(text) == NamePlace::kNone) return false;
  }
  return true;
}

bool accept_name(std::string_view name, std::string& reason) {
  if (name.size() > kMaxNameBytes) return refuse(reason, "the name is too long");
  const std::size_t colon = name.find(':');
  const bool has_prefix = colon != std::string_view::npos;
  if (is_plain_name(name.substr(0, colon)) && (!has_prefix || is_plain_name(name.substr(colon + 1))))
    return true;
  if (!is_text(name)) return refuse(reason, "the name is not a name of XML");
  reason = "\"" + std::string(name) + "\" is not a name of XML";
  return false;
}

bool accept_text(std::string_view text, std::string& reason) {
  if (written_size(text) > kMaxTextBytes)
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
  const bool is_own = prefix == "xml" || prefix == kXmlns || is_reserved_namespace(value);
  if (is_own || (has_prefix && value.empty()))
    return refuse(reason, "XML does not allow this declaration of a namespace");
  return is_supported_namespace(value) || refuse(reason, kUnsupportedNamespace);
}

bool is_supported_namespace(std::string_view uri) { return uri.find('&') == std::string_view::npos; }

bool declares_namespace(std::string_view name) {
  return name.starts_with(kXmlns) && (name.size() == kXmlns.size() || name[kXmlns.size()] == ':');
}

}  // namespace orx::platform::dom
