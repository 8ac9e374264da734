#include "report.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

#include "numbers.h"

namespace orx::cli {
namespace {

using Json = nlohmann::ordered_json;

struct ToJson {
  Json operator()(std::monostate) const { return nullptr; }
  Json operator()(double value) const { return std::isfinite(value) ? Json(value) : Json(shortest(value)); }
  Json operator()(const auto& value) const { return value; }
};

struct ToText {
  std::string operator()(std::monostate) const { return "-"; }
  std::string operator()(bool value) const { return value ? "*" : ""; }
  std::string operator()(auto number) const { return shortest(number); }
  std::string operator()(const std::string& value) const { return one_line(value); }
};

bool continues_character(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

// JSON may hold U+007F to U+009F as they are, but terminals obey them.
std::string escaped(const std::string& json) {
  std::string text;
  for (const char c : json) {
    const auto byte = static_cast<unsigned char>(c);
    const bool is_second = text.ends_with('\xC2') && continues_character(c) && byte < 0xA0;
    if (is_second) text.pop_back();
    if (byte == 0x7F || is_second) {
      text.append("\\u00").append(1, "789"[byte / 16 - 7]).append(1, "0123456789abcdef"[byte % 16]);
    } else {
      text += c;
    }
  }
  return text;
}

void write_json(std::ostream& out, const Json& json) {
  out << escaped(json.dump(2, ' ', /*ensure_ascii=*/false, Json::error_handler_t::replace)) << '\n';
}

constexpr std::size_t kWidestCell = 100;

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
      text += line[i] + std::string(widths[i] - std::min(widths[i], width_of(line[i])) + 2, ' ');
    }
    text.erase(text.find_last_not_of(' ') + 1);
    out << text << '\n';
  }
}

void write(std::ostream& out, const Record& record, Format format) {
  Json json = Json::object();
  std::vector<Line> lines;
  for (const auto& [name, value] : record) {
    json[name] = std::visit(ToJson{}, value);
    lines.push_back({name, text_of(value)});
  }
  if (format == Format::kJson) return write_json(out, json);
  write_aligned(out, lines);
}

void write(std::ostream& out, const Table& table, Format format) {
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

std::string json_of(const Value& value) { return escaped(std::visit(ToJson{}, value).dump()); }

std::string one_line(std::string text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if (byte < 0x20 || byte == 0x7F) text[i] = ' ';
    // U+0080 to U+009F, which terminals obey too.
    if (byte == 0xC2 && i + 1 < text.size() && continues_character(text[i + 1]) &&
        static_cast<unsigned char>(text[i + 1]) < 0xA0) {
      text.replace(i, 2, " ");
    }
  }
  return text;
}

bool is_utf8(const std::string& text) {
  try {
    (void)Json(text).dump();
  } catch (const Json::exception&) {
    return false;
  }
  return true;
}

bool is_plain(const std::string& text) { return is_utf8(text) && one_line(text) == text; }

}  // namespace orx::cli
