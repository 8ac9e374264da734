// What the commands show, for people and for programs.
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

// For people an unknown value is "-", and a table marks what is true with "*". Numbers that JSON does not
// know are texts there.
using Value = std::variant<std::monostate, bool, int, std::int64_t, double, std::string>;
using Record = std::vector<std::pair<std::string, Value>>;

struct Table {
  std::vector<std::string> columns;
  std::vector<std::vector<Value>> rows;  // as many values as there are columns
};

void write(std::ostream& out, const Record& record, Format format);
void write(std::ostream& out, const Table& table, Format format);

// Lines of cells, aligned. A cell that is very long only moves what follows in its own line.
using Line = std::vector<std::string>;
void write_aligned(std::ostream& out, const std::vector<Line>& lines);

// For people, in one line.
std::string text_of(const Value& value);

// For programs, without line ends.
std::string json_of(const Value& value);

// How many characters a UTF-8 text has.
std::size_t width_of(const std::string& text);

// The text with a blank for every control character: what a file says cannot break a line or steer a
// terminal.
std::string one_line(std::string text);

bool is_utf8(const std::string& text);

// Whether it is UTF-8 without control characters.
bool is_plain(const std::string& text);

}  // namespace orx::cli
