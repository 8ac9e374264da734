// What a value of the registry holds, between its bytes and what people and programs write.
#pragma once

#include <orx/compat/hkey.h>

#include <string>

#include "report.h"

namespace orx::cli {

// Bytes with a type; a value's name is empty for the default value of its key.
struct StoredValue {
  std::string name;
  DWORD type = REG_NONE;
  std::string bytes;
};

// The value without loss. `type` is "string", "dword" or "binary", with a text, a number or hexadecimal
// digits; or the number of the type, with hexadecimal digits, for all that these words do not tell: other
// types, and a text or number that is not exactly that.
struct Form {
  Value type;
  Value data;
};

Form form_of(const StoredValue& value);

// For people: the type in a word, and the data as text.
std::string type_name(DWORD type);
std::string shown_data(const StoredValue& value);

// `type` is one that the command line takes: string, dword, double, float or binary. What cannot be read so
// is refused with a reason.
bool value_from_text(const std::string& type, const std::string& text, StoredValue& value,
                     std::string& reason);
bool data_as(const std::string& type, const StoredValue& value, Value& data, std::string& reason);

// `text` must not contain a NUL.
std::string string_bytes(const std::string& text);
bool dword_bytes(std::int64_t number, std::string& bytes);
bool bytes_of_hex(const std::string& digits, std::string& bytes);

}  // namespace orx::cli
