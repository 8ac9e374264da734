// The types of database fields by name or by number. Angle types are also the notations of angles.
#pragma once

#include <cstddef>
#include <string>

#include "report.h"

namespace orx::cli {

// How the value of a field is stored, read and shown.
struct ValueKind {
  Value (*value)(const char* bytes);
  bool (*read_limit)(const std::string& text, char* bytes);  // null for a type without limits
  const char* expected;                                      // null if every text can be read
  int subtype;                                               // the default of an import
  int date_kind;                                             // an orxDateTime kind, or 0
};

struct FieldType {
  const char* name;
  int number;
  const ValueKind& kind;
};

enum class FieldTypes { kAll, kAngles };

// Returns null when no type has this name or number.
const FieldType* find_field_type(FieldTypes among, const std::string& name_or_number);

// The names of the types, as "integer, float, ..."
std::string field_type_names(FieldTypes among);

}  // namespace orx::cli
