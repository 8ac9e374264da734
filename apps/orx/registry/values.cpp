#include "registry/values.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <string_view>

#include "numbers.h"

namespace orx::cli {
namespace {

constexpr std::string_view kDigits = "0123456789ABCDEF";

std::string hex_of(const std::string& bytes) {
  std::string digits;
  digits.reserve(2 * bytes.size());
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    digits += kDigits[byte / 16];
    digits += kDigits[byte % 16];
  }
  return digits;
}

int digit_of(char c) {
  const bool is_lower = c >= 'a' && c <= 'f';
  const char upper = is_lower ? static_cast<char>(c - 'a' + 'A') : c;
  const std::size_t digit = kDigits.find(upper);
  return digit != std::string_view::npos ? static_cast<int>(digit) : -1;
}

template <class Number>
std::string memory_of(Number number) {
  return {reinterpret_cast<const char*>(&number), sizeof number};
}

template <class Number>
bool from_memory(const std::string& bytes, Number& number) {
  if (bytes.size() != sizeof number) return false;
  std::memcpy(&number, bytes.data(), sizeof number);
  return true;
}

bool string_from_text(const std::string& text, std::string& bytes) {
  bytes = string_bytes(text);
  return true;
}

bool dword_from_text(const std::string& text, std::string& bytes) {
  std::int64_t number = 0;
  return read_number(text, number) && dword_bytes(number, bytes);
}

template <class Number>
bool number_from_text(const std::string& text, std::string& bytes) {
  Number number{};
  if (!read_number(text, number)) return false;
  bytes = memory_of(number);
  return true;
}

bool string_data(const std::string& bytes, Value& data) {
  data = bytes.ends_with('\0') ? bytes.substr(0, bytes.size() - 1) : bytes;
  return true;
}

bool dword_data(const std::string& bytes, Value& data) {
  std::uint32_t number = 0;
  if (!from_memory(bytes, number)) return false;
  data = std::int64_t{number};
  return true;
}

template <class Number>
bool number_data(const std::string& bytes, Value& data) {
  Number number{};
  if (!from_memory(bytes, number)) return false;
  data = double_of_digits(number);
  return true;
}

bool binary_data(const std::string& bytes, Value& data) {
  data = hex_of(bytes);
  return true;
}

// A type of the command line. Several types are stored as REG_BINARY; the first of them in the table names
// the stored type.
struct Type {
  const char* name;
  DWORD stored;
  bool (*from_text)(const std::string& text, std::string& bytes);
  bool (*to_data)(const std::string& bytes, Value& data);
  const char* takes;  // what a text must be, for messages
};

constexpr Type kTypes[] = {
    {"string", REG_SZ, string_from_text, string_data, "a text"},
    {"dword", REG_DWORD, dword_from_text, dword_data, "a whole number from -2147483648 to 4294967295"},
    {"binary", REG_BINARY, bytes_of_hex, binary_data, "hexadecimal digits, two for each byte"},
    {"double", REG_BINARY, number_from_text<double>, number_data<double>, "a number within its range"},
    {"float", REG_BINARY, number_from_text<float>, number_data<float>, "a number within its range"},
};

const Type* type_stored_as(DWORD type) {
  const Type* const found = std::ranges::find(kTypes, type, &Type::stored);
  return found != std::end(kTypes) ? found : nullptr;
}

const Type& type_with_name(const std::string& name) {
  return *std::ranges::find(kTypes, name, [](const Type& type) { return std::string(type.name); });
}

// True if a text can be rebuilt exactly: UTF-8 with one NUL, at the end.
bool is_exact_text(const std::string& bytes) {
  return !bytes.empty() && bytes.find('\0') == bytes.size() - 1 && is_utf8(bytes);
}

}  // namespace

LosslessData lossless_data_of(const StoredValue& value) {
  const Type* const type = type_stored_as(value.type);
  const bool has_word = type != nullptr && (value.type != REG_SZ || is_exact_text(value.bytes));
  Value data;
  if (has_word && type->to_data(value.bytes, data)) return {type->name, data};
  return {std::int64_t{value.type}, hex_of(value.bytes)};
}

std::string type_name(DWORD type) {
  const Type* const known = type_stored_as(type);
  return known != nullptr ? known->name : "type " + std::to_string(type);
}

std::string display_text_of(const StoredValue& value) {
  const Type* const type = type_stored_as(value.type);
  Value data;
  if (type == nullptr || !type->to_data(value.bytes, data)) return hex_of(value.bytes);
  return text_of(data);
}

std::vector<std::string> value_types() {
  std::vector<std::string> names;
  for (const Type& type : kTypes) names.emplace_back(type.name);
  return names;
}

bool value_from_text(const std::string& type, const std::string& text, StoredValue& value,
                     std::string& reason) {
  const Type& row = type_with_name(type);
  value.type = row.stored;
  if (row.from_text(text, value.bytes)) return true;
  reason = "a " + type + " takes " + row.takes + ", not '" + text + "'";
  return false;
}

bool convert_data(const std::string& type, const StoredValue& value, Value& data, std::string& reason) {
  const Type& row = type_with_name(type);
  if (row.stored == value.type && row.to_data(value.bytes, data)) return true;
  reason = "is stored as " + type_name(value.type) + " of " + std::to_string(value.bytes.size()) +
           " bytes, which is not a " + type;
  return false;
}

std::string string_bytes(const std::string& text) { return text + '\0'; }

bool dword_bytes(std::int64_t number, std::string& bytes) {
  if (number < std::numeric_limits<std::int32_t>::min() || number > std::numeric_limits<DWORD>::max())
    return false;
  bytes = memory_of(static_cast<std::uint32_t>(number));
  return true;
}

bool bytes_of_hex(const std::string& digits, std::string& bytes) {
  bytes.clear();
  if (digits.size() % 2 != 0) return false;
  for (std::size_t i = 0; i < digits.size(); i += 2) {
    const int high = digit_of(digits[i]);
    const int low = digit_of(digits[i + 1]);
    if (high < 0 || low < 0) return false;
    bytes += static_cast<char>(16 * high + low);
  }
  return true;
}

}  // namespace orx::cli
