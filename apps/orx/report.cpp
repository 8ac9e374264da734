#include "report.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

#include "numbers.h"

namespace orx::cli {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t kWidestCell = 100;  // longer cells do not widen their column
constexpr std::size_t kColumnGap = 2;

struct ToJson {
  Json operator()(std::monostate) const { return nullptr; }
  Json operator()(double value) const {
    return std::isfinite(value) ? Json(value) : Json(shortest_text(value));
  }
  Json operator()(const auto& value) const { return value; }
};

struct ToText {
  std::string operator()(std::monostate) const { return "-"; }
  std::string operator()(bool value) const { return value ? "*" : ""; }
  std::string operator()(auto number) const { return shortest_text(number); }
  std::string operator()(const std::string& value) const { return one_line(value); }
};

constexpr char kHexDigits[] = "0123456789abcdef";

bool continues_character(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

// Escapes U+007F to U+009F, which JSON permits in strings, but which terminals obey. U+0080 to U+009F are
// 0xC2 and a second byte in UTF-8.
std::string escape_controls(const std::string& json) {
  std::string text;
  for (const char c : json) {
    const auto byte = static_cast<unsigned char>(c);
    const bool is_second_byte = text.ends_with('\xC2') && continues_character(c) && byte < 0xA0;
    if (is_second_byte) text.pop_back();
    if (byte == 0x7F || is_second_byte) {
      text += "\\u00";
      text += kHexDigits[byte / 16];
      text += kHexDigits[byte % 16];
    } else {
      text += c;
    }
  }
  return text;
}

void write_json(std::ostream& out, const Json& json) {
  out << escape_controls(json.dump(2, ' ', /*ensure_ascii=*/false, Json::error_handler_t::replace)) << '\n';
}

}  // namespace

std::size_t width_of(const std::string& text) {
  return text.size() - static_cast<std::size_t>(std::ranges::count_if(text, continues_character));
}

void write_aligned(std::ostream& out, const std::vector<Line>& lines) {
  std::vector<std::size_t> widths;
  for (const Line& line : lines) {
    widths.resize(std::max(widths.size(), line.size()));
    for (std::size_t i = 0; i < line.size(); ++i) {
      const std::size_t width = width_of(line[i]);
      if (width <= kWidestCell) widths[i] = std::max(widths[i], width);
    }
  }
  for (const Line& line : lines) {
    std::string text;
    for (std::size_t i = 0; i < line.size(); ++i) {
      const std::size_t width = std::min(widths[i], width_of(line[i]));
      text += line[i] + std::string(widths[i] - width + kColumnGap, ' ');
    }
    text.erase(text.find_last_not_of(' ') + 1);
    out << text << '\n';
  }
}

void write_record(std::ostream& out, const Record& record, Format format) {
  Json json = Json::object();
  std::vector<Line> lines;
  for (const auto& [name, value] : record) {
    json[name] = std::visit(ToJson{}, value);
    lines.push_back({name, text_of(value)});
  }
  if (format == Format::kJson) return write_json(out, json);
  write_aligned(out, lines);
}

void write_table(std::ostream& out, const Table& table, Format format) {
  Json json = Json::array();
  std::vector<Line> lines{table.columns};
  for (const std::vector<Value>& row : table.rows) {
    Json& object = json.emplace_back(Json::object());
    Line& line = lines.emplace_back();
    for (std::size_t i = 0; i < row.size(); ++i) {
      object[table.columns[i]] = std::visit(ToJson{}, row[i]);
      line.push_back(text_of(row[i]));
    }
  }
  if (format == Format::kJson) return write_json(out, json);
  write_aligned(out, lines);
}

std::string text_of(const Value& value) { return std::visit(ToText{}, value); }

std::string json_of(const Value& value) { return escape_controls(std::visit(ToJson{}, value).dump()); }

std::string one_line(std::string text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if (byte < 0x20 || byte == 0x7F) text[i] = ' ';
    // Terminals also obey U+0080 to U+009F.
    const char next = i + 1 < text.size() ? text[i + 1] : '\0';
    if (byte == 0xC2 && continues_character(next) && static_cast<unsigned char>(next) < 0xA0) {
      text.replace(i, 2, " ");
    }
  }
  return text;
}

bool is_utf8(const std::string& text) {
  try {
    (void)Json(text).dump();  // raises an exception for invalid UTF-8
  } catch (const Json::exception&) {
    return false;
  }
  return true;
}

bool is_plain(const std::string& text) { return is_utf8(text) && one_line(text) == text; }

}  // namespace orx::cli
