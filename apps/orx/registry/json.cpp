#include "registry/json.h"

#include <orx/compat/string_a.h>

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <nlohmann/json.hpp>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

namespace orx::cli {
namespace {

using Json = nlohmann::json;

std::string quote_name(const std::string& text, const KeyName& key) {
  if (!is_utf8(text)) throw Failure(key.full, "a name is not UTF-8 text: '" + text + "'");
  return json_of(text);
}

std::string value_json(const StoredValue& value) {
  const LosslessData form = lossless_data_of(value);
  return "{\"type\": " + json_of(form.type) + ", \"data\": " + json_of(form.data) + '}';
}

// Writes nested objects with one member per line. The caller closes every object that it opens.
class ObjectWriter {
 public:
  ObjectWriter(std::ostream& out, const KeyName& key) : out_(out), key_(key) {}

  void Open() {
    out_ << '{';
    indent_ += "  ";
    is_first_ = true;
  }
  std::ostream& Put(const std::string& name) {
    out_ << (is_first_ ? "\n" : ",\n") << indent_ << quote_name(name, key_) << ": ";
    is_first_ = false;
    return out_;
  }
  void Close() {
    indent_.resize(indent_.size() - 2);
    if (!is_first_) out_ << '\n' << indent_;
    out_ << '}';
    is_first_ = false;
  }

 private:
  std::ostream& out_;
  const KeyName& key_;
  std::string indent_;
  bool is_first_ = true;
};

void write_members(ObjectWriter& writer, const Tree& tree) {
  if (!tree.values.empty()) {
    writer.Put("values");
    writer.Open();
    for (const StoredValue& value : tree.values) writer.Put(value.name) << value_json(value);
    writer.Close();
  }
  if (tree.keys.empty()) return;
  writer.Put("keys");
  writer.Open();
  for (const Tree& key : tree.keys) {
    writer.Put(key.name);
    writer.Open();
    write_members(writer, key);
    writer.Close();
  }
  writer.Close();
}

constexpr std::size_t kLongestReason = 300;  // the parser quotes its input, which may be long
// Two objects for each level of keys, plus the document, the values of a key, one value, and a spare level.
constexpr std::size_t kDeepestNesting = 2 * kDeepestLevel + 4;

// Refuses errors that a parsed document no longer shows: two names in an object that are the same for the
// registry, and a name that contains a NUL, where the registry would cut it. Both would silently lose a
// value. It also limits the nesting, since ReadKey is recursive.
class NameCheck : public nlohmann::json_sax<Json> {
 public:
  explicit NameCheck(std::string file) : file_(std::move(file)) {}

  bool key(string_t& name) override {
    Require(name.find('\0') == string_t::npos, "a name contains a NUL");
    Require(objects_.back().insert(name.c_str()).second,
            "the name '" + name + "' occurs twice in one object");
    return true;
  }
  bool start_object(std::size_t /*size*/) override { return Enter(); }
  bool end_object() override { return Leave(); }
  bool start_array(std::size_t /*size*/) override { return Enter(); }
  bool end_array() override { return Leave(); }

  bool parse_error(std::size_t /*position*/, const std::string& /*token*/,
                   const nlohmann::detail::exception& error) override {
    const std::string what = error.what();
    throw Failure(file_, "it is not JSON: " + what.substr(what.find(']') + 2, kLongestReason));
  }

  bool null() override { return true; }
  bool boolean(bool /*value*/) override { return true; }
  bool number_integer(number_integer_t /*value*/) override { return true; }
  bool number_unsigned(number_unsigned_t /*value*/) override { return true; }
  bool number_float(number_float_t /*value*/, const string_t& /*text*/) override { return true; }
  bool string(string_t& /*value*/) override { return true; }
  bool binary(binary_t& /*value*/) override { return true; }

 private:
  struct Less {
    bool operator()(const CStringA& a, const CStringA& b) const { return a.CompareNoCase(b) < 0; }
  };

  void Require(bool holds, const std::string& reason) const {
    if (!holds) throw Failure(file_, reason);
  }
  bool Enter() {
    Require(objects_.size() < kDeepestNesting, "it is nested too deeply");
    objects_.emplace_back();
    return true;
  }
  bool Leave() {
    objects_.pop_back();
    return true;
  }

  std::string file_;
  std::vector<std::set<CStringA, Less>> objects_;  // the names in each open object; empty for an array
};

Json parse_json(const std::string& text, const std::string& file) {
  NameCheck check(file);
  Json::sax_parse(text, &check);
  return Json::parse(text);
}

// Builds the tree from a parsed document. A place is the path of a member in the document, for messages.
class DocumentReader {
 public:
  explicit DocumentReader(const std::string& file) : file_(file) {}

  TreeDocument ReadDocument(const Json& json) {
    TreeDocument document;
    document.tree = ReadKey({}, json, {}, 0);
    if (const auto key = json.find("key"); key != json.end()) document.key = RequireText(*key, "/key");
    document.depth = depth_;
    return document;
  }

 private:
  void Require(bool holds, const std::string& place, const std::string& expectation) const {
    if (!holds) throw Failure(file_, "at " + (place.empty() ? "/" : place) + ": " + expectation);
  }

  void RequireMembers(const Json& json, const std::string& place,
                      std::initializer_list<std::string_view> known) const {
    Require(json.is_object(), place, "an object is expected");
    for (const auto& [name, member] : json.items()) {
      Require(std::ranges::find(known, name) != known.end(), place, "'" + name + "' is not expected");
    }
  }

  void RequireName(const std::string& name, std::size_t longest, const std::string& place) const {
    Require(width_of(name) <= longest, place,
            "a name has at most " + std::to_string(longest) + " characters");
  }

  const std::string& RequireText(const Json& json, const std::string& place) const {
    Require(json.is_string(), place, "a text is expected");
    const auto& text = json.get_ref<const std::string&>();
    Require(text.find('\0') == std::string::npos, place, "a text cannot contain a NUL");
    return text;
  }

  // Calls `visit` for each member of the object `name` in `json`, if there is one.
  template <class Visit>
  void ForEachMember(const Json& json, const char* name, const std::string& place, Visit visit) const {
    const auto found = json.find(name);
    if (found == json.end()) return;
    const std::string within = place + '/' + name;
    Require(found->is_object(), within, "an object is expected");
    for (const auto& [member, content] : found->items()) {
      visit(member, content, std::string(within).append("/").append(member));
    }
  }

  Tree ReadKey(const std::string& name, const Json& json, const std::string& place, std::size_t depth) {
    Require(depth <= kDeepestLevel, place, "the key is nested too deeply");
    RequireMembers(json, place, {"values", "keys", depth == 0 ? "key" : "keys"});
    depth_ = std::max(depth_, depth);
    Tree tree{name, {}, {}};
    ForEachMember(json, "values", place,
                  [&](const auto& value, const Json& content, const std::string& within) {
                    RequireName(value, ORX_REGISTRY_VALUE_NAME_LENGTH, within);
                    tree.values.push_back(ReadValue(value, content, within));
                  });
    ForEachMember(json, "keys", place, [&](const auto& key, const Json& content, const std::string& within) {
      RequireName(key, ORX_REGISTRY_KEY_NAME_LENGTH, within);
      Require(!key.empty() && key.find('\\') == std::string::npos, within,
              "the name of a key cannot be empty or contain a backslash");
      tree.keys.push_back(ReadKey(key, content, within, depth + 1));
    });
    return tree;
  }

  StoredValue ReadValue(const std::string& name, const Json& json, const std::string& place) const {
    RequireMembers(json, place, {"type", "data"});
    Require(json.size() == 2, place, "both \"type\" and \"data\" are expected");
    const Json& type = json["type"];
    const Json& data = json["data"];
    const std::string at_data = place + "/data";
    if (type == "string") return {name, REG_SZ, string_bytes(RequireText(data, at_data))};
    StoredValue value{name, REG_BINARY, {}};
    if (type == "dword") {
      value.type = REG_DWORD;
      Require(ReadDword(data, value.bytes), at_data,
              "a whole number from -2147483648 to 4294967295 is expected");
      return value;
    }
    if (type != "binary") value.type = TypeNumber(type, place + "/type");
    Require(bytes_of_hex(RequireText(data, at_data), value.bytes), at_data,
            "hexadecimal digits are expected, two for each byte");
    return value;
  }

  DWORD TypeNumber(const Json& json, const std::string& place) const {
    Require(IsDword(json), place, "\"string\", \"dword\", \"binary\" or the number of a type is expected");
    return json.get<DWORD>();
  }

  static bool IsDword(const Json& json) {
    return json.is_number_unsigned() && json.get<std::uint64_t>() <= std::numeric_limits<DWORD>::max();
  }

  static bool ReadDword(const Json& json, std::string& bytes) {
    const bool is_negative = json.is_number_integer() && !json.is_number_unsigned();
    return (is_negative || IsDword(json)) && dword_bytes(json.get<std::int64_t>(), bytes);
  }

  const std::string& file_;
  std::size_t depth_ = 0;  // of the deepest key so far
};

}  // namespace

void write_json(std::ostream& out, const KeyName& key, const Tree& tree) {
  ObjectWriter writer(out, key);
  writer.Open();
  writer.Put("key") << quote_name(key.full, key);
  write_members(writer, tree);
  writer.Close();
  out << '\n';
}

TreeDocument read_json(const std::string& text, const std::string& file) {
  return DocumentReader(file).ReadDocument(parse_json(text, file));
}

}  // namespace orx::cli
