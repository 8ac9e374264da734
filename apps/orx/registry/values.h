// Conversions between the bytes of a value in the registry and its data as text or JSON.
#pragma once

#include <orx/compat/hkey.h>

#include <cstdint>
#include <string>
#include <vector>

#include "report.h"

namespace orx::cli {

// A value as the registry stores it. The name is empty for the default value of a key.
struct StoredValue {
  std::string name;
  DWORD type = REG_NONE;
  std::string bytes;
};

// A value for JSON, without loss. `type` is "string", "dword" or "binary", and `data` is a text, a number or
// hexadecimal digits. For another type, and for bytes that are not exactly a text or a number, `type` is the
// number of the type and `data` is hexadecimal digits.
struct LosslessData {
  Value type;
  Value data;
};

LosslessData lossless_data_of(const StoredValue& value);

// The type in words and the data as text, for people.
std::string type_name(DWORD type);
std::string display_text_of(const StoredValue& value);

// The types of the command line.
std::vector<std::string> value_types();

// `type` is one of value_types(). Both functions return false
// and set `reason` when the text or the value does not have this type.
bool value_from_text(const std::string& type, const std::string& text, StoredValue& value,
                     std::string& reason);
bool convert_data(const std::string& type, const StoredValue& value, Value& data, std::string& reason);

// The bytes as the registry stores them. A text must not contain a NUL. dword_bytes returns false for a
// number that does not fit, and bytes_of_hex for text that is not pairs of hexadecimal digits.
std::string string_bytes(const std::string& text);
bool dword_bytes(std::int64_t number, std::string& bytes);
bool bytes_of_hex(const std::string& digits, std::string& bytes);

}  // namespace orx::cli
