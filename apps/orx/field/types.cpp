#include "field/types.h"

#include <orx/datetime/date_time.h>
#include <orx/text/field_value.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>

#include "numbers.h"

namespace orx::cli {
namespace {

template <class Number>
Number from_memory(const char* bytes) {
  Number number;
  std::memcpy(&number, bytes, sizeof number);
  return number;
}

Value integer_value(const char* bytes) { return from_memory<std::int32_t>(bytes); }

template <class Number>
Value number_value(const char* bytes) {
  return double_of_digits(from_memory<Number>(bytes));
}

Value text_value(const char* bytes) { return bytes; }

Value no_value(const char*) { return {}; }

template <class Number>
bool read_limit(const std::string& text, char* bytes) {
  Number number{};
  if (!read_number(text, number)) return false;
  std::memcpy(bytes, &number, sizeof number);
  return true;
}

constexpr ValueKind moment(int kind, const char* expected) {
  return {number_value<double>, nullptr, expected, orxDayMonthYear, kind};
}

constexpr ValueKind kInteger{integer_value, read_limit<std::int32_t>, nullptr, 0, 0};
constexpr ValueKind kFloat{number_value<float>, read_limit<float>, nullptr, 0, 0};
constexpr ValueKind kDouble{number_value<double>, read_limit<double>, nullptr, 0, 0};
constexpr ValueKind kNumber{number_value<double>, nullptr, nullptr, 0, 0};
constexpr ValueKind kAngle = kNumber;
constexpr ValueKind kText{text_value, nullptr, nullptr, 0, 0};
constexpr ValueKind kYesNo{integer_value, nullptr, "yes or no", 0, 0};
constexpr ValueKind kNothing{no_value, nullptr, nullptr, 0, 0};
constexpr ValueKind kDate = moment(orxDateTimeDate, "a date");
constexpr ValueKind kTime = moment(orxDateTimeTime, "a time");
constexpr ValueKind kDateTime = moment(orxDateTimeFull, "a date and a time");

constexpr FieldType kTypes[] = {
    {"integer", orxdbInteger, kInteger},
    {"float", orxdbFloat, kFloat},
    {"text", orxdbText, kText},
    {"yes-no", orxdbYesNo, kYesNo},
    {"nothing", orxdbNothing, kNothing},
    {"date", orxdbDate, kDate},
    {"time", orxdbTime, kTime},
    {"datetime", orxdbDateTime, kDateTime},
    {"double", orxdbDouble, kDouble},
    {"degrees", orxdbDegrees, kAngle},
    {"dms", orxdbDegreesMinutesSeconds, kAngle},
    {"dm", orxdbDegreesDecimalMinutes, kAngle},
    {"radians", orxdbRadians, kAngle},
    {"grads", orxdbGrads, kAngle},
    {"long-text", orxdbLongText, kText},
    {"dms-decimal", orxdbDegreesMinutesDecimalSeconds, kAngle},
    {"number", orxdbNumber, kNumber},
};

// Angles share one ValueKind, so its address identifies them.
bool belongs_to(FieldTypes among, const FieldType& type) {
  return among == FieldTypes::kAll || &type.kind == &kAngle;
}

}  // namespace

const FieldType* find_field_type(FieldTypes among, const std::string& name_or_number) {
  int number = 0;
  read_number(name_or_number, number);
  const FieldType* const found = std::ranges::find_if(kTypes, [&](const FieldType& type) {
    return belongs_to(among, type) && (type.number == number || type.name == name_or_number);
  });
  return found != std::end(kTypes) ? found : nullptr;
}

std::string field_type_names(FieldTypes among) {
  std::string names;
  for (const FieldType& type : kTypes) {
    if (belongs_to(among, type)) names.append(names.empty() ? "" : ", ").append(type.name);
  }
  return names;
}

}  // namespace orx::cli
