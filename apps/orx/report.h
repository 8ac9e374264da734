// The output of the commands: aligned text for people, or JSON for programs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace orx::cli {

enum class Format { kText, kJson };

// In text, a monostate (an unknown value) is "-", true is "*" and false is blank. In JSON, numbers that are
// not finite are strings.
using Value = std::variant<std::monostate, bool, int, std::int64_t, double, std::string>;
using Record = std::vector<std::pair<std::string, Value>>;

struct Table {
  std::vector<std::string> columns;
  std::vector<std::vector<Value>> rows;  // each with one value per column
};

void write_record(std::ostream& out, const Record& record, Format format);
void write_table(std::ostream& out, const Table& table, Format format);

// Writes lines of cells in aligned columns. A very long cell does not widen its column; it only shifts the
// rest of its own line.
using Line = std::vector<std::string>;
void write_aligned(std::ostream& out, const std::vector<Line>& lines);

// The value as text in one line.
std::string text_of(const Value& value);

// The value as JSON without line ends.
std::string json_of(const Value& value);

// The number of characters of a UTF-8 text.
std::size_t width_of(const std::string& text);

// Returns the text with a space for every control character, so that text from a file cannot break a line or
// send commands to the terminal.
std::string one_line(std::string text);

bool is_utf8(const std::string& text);

// True if the text is UTF-8 without control characters.
bool is_plain(const std::string& text);

}  // namespace orx::cli
