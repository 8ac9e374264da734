#include <orx/compat/string_a.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <sstream>
#include <string>

#include "commands.h"
#include "failure.h"
#include "registry/json.h"
#include "registry/tree.h"
#include "registry/values.h"
#include "whole_file.h"

namespace orx::cli {
namespace {

constexpr std::size_t kMaxDigitsListed = 64;  // more digits are cut in a list

// The suite stores ints as dwords. Returns a note with the signed value of a dword that may be negative.
std::string signed_note(const StoredValue& value) {
  Value data = lossless_data_of(value).data;
  const auto* const number = std::get_if<std::int64_t>(&data);
  if (number == nullptr || value.type != REG_DWORD || *number <= std::numeric_limits<std::int32_t>::max())
    return {};
  return " (" + std::to_string(static_cast<std::int32_t>(*number)) + ')';
}

std::string listed_data(const StoredValue& value) {
  std::string data = display_text_of(value);
  if (value.type != REG_SZ && data.size() > kMaxDigitsListed) {
    data.resize(kMaxDigitsListed);
    data += "... (" + std::to_string(value.bytes.size()) + " bytes)";
  }
  return data + signed_note(value);
}

void print_tree(std::ostream& out, const Tree& tree, const std::string& indent) {
  std::vector<Line> lines;
  for (const StoredValue& value : tree.values) {
    const std::string name = value.name.empty() ? "(default)" : one_line(value.name);
    lines.push_back({indent + name, type_name(value.type), listed_data(value)});
  }
  write_aligned(out, lines);
  for (const Tree& key : tree.keys) {
    out << indent << one_line(key.name) << "\\\n";
    print_tree(out, key, indent + "  ");
  }
}

std::size_t levels_of(const KeyName& key) {
  return static_cast<std::size_t>(std::ranges::count(key.full, '\\'));
}

KeyName key_of(const TreeDocument& document, const std::string& file) {
  try {
    return parse_key(document.key);
  } catch (const Failure& failure) {
    throw Failure(file, "at /key: " + failure.Reason());
  }
}

}  // namespace

void registry_get(const RegistryArguments& arguments, std::ostream& out) {
  const KeyName key = parse_key(arguments.key);
  const StoredValue value = read_value(key, arguments.value.value_or(""));
  LosslessData form = lossless_data_of(value);
  std::string text = display_text_of(value);
  if (!arguments.type.empty()) {
    std::string reason;
    form.type = arguments.type;
    if (!convert_data(arguments.type, value, form.data, reason)) {
      const std::string name = value.name.empty() ? "the default value" : "'" + value.name + '\'';
      throw Failure(key.full, name + ' ' + reason);
    }
    text = text_of(form.data);
  }
  if (arguments.format == Format::kText) {
    out << text << '\n';
    return;
  }
  write_record(out, Record{{"Key", key.full}, {"Name", value.name}, {"Type", form.type}, {"Data", form.data}},
               Format::kJson);
}

void registry_set(const RegistryArguments& arguments, std::ostream&) {
  const KeyName key = parse_key(arguments.key);
  StoredValue value{arguments.value.value_or(""), REG_NONE, {}};
  std::string reason;
  if (!value_from_text(arguments.type.empty() ? "string" : arguments.type, arguments.data, value, reason)) {
    throw Failure(key.full, reason);
  }
  write_value(key, value);
}

void registry_list(const RegistryArguments& arguments, std::ostream& out) {
  const KeyName key = parse_key(arguments.key);
  const Tree tree = read_tree(key);
  if (arguments.format == Format::kJson) return write_json(out, key, tree);
  out << one_line(key.full) << '\n';
  print_tree(out, tree, "  ");
}

void registry_delete(const RegistryArguments& arguments, std::ostream&) {
  const KeyName key = parse_key(arguments.key);
  if (arguments.value) return delete_value(key, *arguments.value);
  if (key.path.empty() || CStringA(key.path.c_str()).CompareNoCase("Software") == 0) {
    throw Failure(key.full, "this key cannot be deleted");
  }
  if (!arguments.tree && has_sub_keys(key)) throw Failure(key.full, "the key has sub-keys (use --tree)");
  const LSTATUS status =
      arguments.tree ? SHDeleteKeyA(key.root, key.path.c_str()) : RegDeleteKeyA(key.root, key.path.c_str());
  if (status != ERROR_SUCCESS) throw registry_failure(key, status, Use::kWrite);
}

void registry_export(const RegistryArguments& arguments, std::ostream& out) {
  const KeyName key = parse_key(arguments.key);
  const Tree tree = read_tree(key);
  if (arguments.file.empty()) return write_json(out, key, tree);
  std::ostringstream document;
  write_json(document, key, tree);
  replace_file(arguments.file, document.str());
}

void registry_import(const RegistryArguments& arguments, std::ostream&) {
  const TreeDocument document = read_json(read_file(arguments.file), arguments.file);
  const KeyName key = arguments.key.empty() ? key_of(document, arguments.file) : parse_key(arguments.key);
  if (levels_of(key) + document.depth > kDeepestLevel) {
    throw Failure(arguments.file, "its keys would be nested too deeply below " + key.full);
  }
  write_tree(key, document.tree);
}

}  // namespace orx::cli
