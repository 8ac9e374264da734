#include <orx/datetime/date_time_format.h>
#include <orx/text/angle_text.h>
#include <orx/text/field_value.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <numbers>
#include <string>

#include "commands.h"
#include "failure.h"
#include "field/types.h"
#include "numbers.h"
#include "options.h"

namespace orx::cli {
namespace {

int mode_of(const AngleArguments& arguments) {
  return find_field_type(FieldTypes::kAngles, arguments.mode)->number;
}

Record angle_record(double radians) {
  return {{"Radians", radians}, {"Degrees", radians / std::numbers::pi * 180}};
}

// A limit as bytes of the field's type. Get returns null when no limit was given.
class Limit {
 public:
  Limit(const FieldType& type, const std::string& option, const std::optional<std::string>& text)
      : is_given_(text.has_value()) {
    if (!is_given_) return;
    if (type.kind.read_limit == nullptr) throw UsageError(option + ": " + type.name + " has no limits");
    if (!type.kind.read_limit(*text, bytes_.data()))
      throw UsageError(option + ": '" + *text + "' is not a valid " + type.name);
  }
  const void* Get() const { return is_given_ ? bytes_.data() : nullptr; }

 private:
  bool is_given_;
  std::array<char, ORX_FIELD_VALUE_SIZE> bytes_{};
};

struct Imported {
  Value value;
  int special;
  int result;
};

std::string special_name(int code) {
  constexpr const char* kNames[] = {"ordinary", "below", "above", "NC", "NS", "IS", "NE", "ERR"};
  return kNames[code];
}

// Year, month, day with four digits for the year, in whatever order the text was read.
Value date_text(const ValueKind& kind, const Imported& imported) {
  if (imported.result != 0 || imported.special != orxdbOrdinary) return {};
  const orxDateTime moment{std::get<double>(imported.value), orxYearMonthDay,
                           static_cast<std::int16_t>(kind.date_kind), 0};
  std::array<char, ORX_DATE_TEXT_SIZE> text{};
  orxDateTime_FormatSpecialFullLengthString(&moment, text.data(), static_cast<int>(text.size()));
  return text.data();
}

Record field_record(const ValueKind& kind, const Imported& imported) {
  Record shown{{"Value", imported.value}};
  if (kind.date_kind != 0) shown.emplace_back("Text", date_text(kind, imported));
  shown.emplace_back("Special", imported.special);
  shown.emplace_back("SpecialName", special_name(imported.special));
  shown.emplace_back("Result", imported.result);
  return shown;
}

}  // namespace

void angle_read(const AngleArguments& arguments, std::ostream& out) {
  const double radians =
      zel_convert_str_to_ang(mode_of(arguments), arguments.text.c_str(), static_cast<int>(arguments.packed));
  write_record(out, angle_record(radians), arguments.format);
}

void angle_write(const AngleArguments& arguments, std::ostream& out) {
  double radians = 0;
  if (!read_number(arguments.text, radians)) throw Failure(arguments.text, "it is not a number");
  if (arguments.degrees) radians = radians / 180 * std::numbers::pi;
  std::array<char, ORX_ANGLE_TEXT_SIZE> text{};
  zel_convert_ang_to_str(mode_of(arguments), radians, static_cast<int>(arguments.packed), text.data());
  if (arguments.format == Format::kJson) {
    Record shown = angle_record(radians);
    shown.emplace_back("Text", text.data());
    return write_record(out, shown, Format::kJson);
  }
  out << text.data() << '\n';
}

void field_show(const FieldArguments& arguments, std::ostream& out) {
  const FieldType& type = *find_field_type(FieldTypes::kAll, arguments.type);
  const Limit low(type, "--low", arguments.low);
  const Limit high(type, "--high", arguments.high);
  // A size larger than the text and the largest value changes nothing, so the buffer needs no more.
  constexpr std::size_t kValueSize = ORX_FIELD_VALUE_SIZE;
  std::string bytes(std::max(arguments.text.size() + 1, kValueSize), '\0');
  const int size = std::min(arguments.size, static_cast<int>(bytes.size()));
  Imported imported{};
  imported.result =
      orxdb_StrToVal(arguments.text.c_str(), low.Get(), high.Get(), type.number,
                     arguments.subtype.value_or(type.kind.subtype), size, &imported.special, bytes.data());
  imported.value = type.kind.value(bytes.data());
  write_record(out, field_record(type.kind, imported), arguments.format);
  if (imported.result == 0) return;
  if (imported.result == ORX_FIELD_NOT_READ) {
    throw Failure(arguments.text, std::string("it is not ") + type.kind.expected);
  }
  throw Failure(arguments.text, "it does not fit into " + std::to_string(size) + " bytes");
}

}  // namespace orx::cli
