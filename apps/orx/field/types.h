// The types of database fields by name or by number. Those that are angles are the notations of angles too.
#pragma once

#include <cstddef>
#include <string>

#include "report.h"

namespace orx::cli {

// How values lie in a field.
struct ValueKind {
  Value (*value)(const char* bytes);
  bool (*read_limit)(const std::string& text, char* bytes);  // null when values are not below or above limits
  const char* expected;                                      // null when a text cannot fail to be read
  int subtype;                                               // what an import has, unless told otherwise
  int date_kind;                                             // of orxDateTime, or 0
};

struct FieldType {
  const char* name;
  int number;
  const ValueKind& kind;
};

enum class Among { kTypes, kAngles };

// Null when it is none of them.
const FieldType* find_type(Among among, const std::string& name_or_number);

// "integer, float, ..."
std::string type_names(Among among);

}  // namespace orx::cli
