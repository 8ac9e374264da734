// What the commands show, for people and for programs.
#pragma once

#include <ostream>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace orx::cli {

enum class Format { kText, kJson };

// For people an unknown value is "-", and a table marks what is true with "*".
using Value = std::variant<std::monostate, bool, int, std::string>;
using Record = std::vector<std::pair<std::string, Value>>;

struct Table {
  std::vector<std::string> columns;
  std::vector<std::vector<Value>> rows;  // as many values as there are columns
};

void write(std::ostream& out, const Record& record, Format format);
void write(std::ostream& out, const Table& table, Format format);

// The text with a blank for every control character: what a file says cannot break a line or steer a
// terminal.
std::string one_line(std::string text);

// Whether it is UTF-8 without control characters.
bool is_plain(const std::string& text);

}  // namespace orx::cli
