#include <orx/text/field_value.h>

#include <orx/base/number_text.h>
#include <orx/datetime/date_time_parse.h>
#include <orx/datetime/static_defaults.h>
#include <orx/platform/code_page.h>
#include <orx/text/angle_text.h>
#include <orx/text/strings.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <string_view>

namespace {

constexpr std::size_t kSearchedLength = 127;  // tokens are searched in this many characters

constinit int date_order = orxDayMonthYear;

struct Field {
  const char* text;
  int type;
  int subtype;
  int size;
  void* dst;
};

template <typename Value>
void store(const Field& field, Value value) {
  std::memcpy(field.dst, &value, sizeof value);
}

int read_integer(const Field& field) {
  store(field, orx::read_int32(field.text));
  return 0;
}

template <typename Value>
int read_number(const Field& field) {
  store(field, static_cast<Value>(orx::read_double(field.text)));
  return 0;
}

// The fast path: most texts are a number and nothing else, so they contain no token. A longer text must be
// searched all the same: its searched part may be blank or a lone minus, and then it is a token.
template <typename Value>
bool read_plain_number(const Field& field) {
  const orx::Number number = orx::read_number(field.text);
  const std::ptrdiff_t length = number.end - field.text;
  const bool is_searched = length <= static_cast<std::ptrdiff_t>(kSearchedLength);
  if (*number.end != '\0' || length == 0 || !is_searched) return false;
  store(field, static_cast<Value>(number.value));
  return true;
}

int read_angle(const Field& field) {
  store(field, zel_convert_str_to_ang(field.type, field.text, 0));
  return 0;
}

int read_nothing(const Field&) { return 0; }

int read_text(const Field& field) {
  if (field.size <= 0) return ORX_FIELD_CUT;
  const auto size = static_cast<std::size_t>(field.size);
  const std::string_view text(field.text, strnlen(field.text, size));
  const std::size_t stored = orx::platform::truncated_size(text, size - 1);
  std::memcpy(field.dst, field.text, stored);
  return text.size() < size ? 0 : ORX_FIELD_CUT;
}

int read_yes_no(const Field& field) {
  constexpr struct {
    const char* text;
    std::int32_t value;
  } kWords[] = {{"True", 1},  {"T", 1}, {"1", 1}, {"Yes", 1}, {"Y", 1},
                {"False", 0}, {"F", 0}, {"0", 0}, {"No", 0},  {"N", 0}};
  for (const auto& [text, value] : kWords) {
    if (orx::platform::compare_no_case(field.text, text) != 0) continue;
    store(field, value);
    return 0;
  }
  return ORX_FIELD_NOT_READ;
}

// Reads a record of the kind. The order of the field becomes the order of the database even if the text is
// refused.
int read_moment(const Field& field, int kind, const char* text) {
  orxdb_SetDateFormat(field.subtype);
  using orx::datetime::to_record_field;
  orxDateTime moment{0.0, to_record_field(date_order), to_record_field(kind), 0};
  if (orxDateTime_ParseString(&moment, text) != 0) return ORX_FIELD_NOT_READ;
  store(field, moment.value);
  return 0;
}

// The time is added because a lone number would otherwise be read as an hour, and not as the day.
int read_date(const Field& field) {
  char text[50];
  ORX_snprintf(text, sizeof text - 1, "%s 00:00:00", field.text);
  return read_moment(field, orxDateTimeFull, text);
}

int read_time(const Field& field) { return read_moment(field, orxDateTimeTime, field.text); }

int read_date_time(const Field& field) { return read_moment(field, orxDateTimeFull, field.text); }

// The tokens that a type may have. The tokens of measurements include those of values.
enum class TokenGroup { kNone, kValue, kMeasurement };

struct Type {
  int number;
  TokenGroup tokens;
  std::size_t value_size;           // 0: no value, or a text
  int (*read)(const Field& field);  // returns the result of orxdb_StrToVal
  bool (*read_plain)(const Field& field) = nullptr;
};

constexpr int kUnknownType = 0;

// Indexed by the number of the type.
constexpr Type kTypes[] = {
    {kUnknownType, TokenGroup::kNone, 0, read_nothing},
    {orxdbInteger, TokenGroup::kMeasurement, sizeof(std::int32_t), read_integer},
    {orxdbFloat, TokenGroup::kMeasurement, sizeof(float), read_number<float>, read_plain_number<float>},
    {orxdbText, TokenGroup::kNone, 0, read_text},
    {orxdbYesNo, TokenGroup::kNone, sizeof(std::int32_t), read_yes_no},
    {orxdbNothing, TokenGroup::kNone, 0, read_nothing},
    {orxdbDate, TokenGroup::kValue, sizeof(double), read_date},
    {orxdbTime, TokenGroup::kValue, sizeof(double), read_time},
    {orxdbDateTime, TokenGroup::kValue, sizeof(double), read_date_time},
    {orxdbDouble, TokenGroup::kMeasurement, sizeof(double), read_number<double>, read_plain_number<double>},
    {orxdbDegrees, TokenGroup::kValue, sizeof(double), read_angle},
    {orxdbDegreesMinutesSeconds, TokenGroup::kValue, sizeof(double), read_angle},
    {orxdbDegreesDecimalMinutes, TokenGroup::kValue, sizeof(double), read_angle},
    {orxdbRadians, TokenGroup::kValue, sizeof(double), read_angle},
    {orxdbGrads, TokenGroup::kValue, sizeof(double), read_angle},
    {orxdbLongText, TokenGroup::kNone, 0, read_text},
    {orxdbDegreesMinutesDecimalSeconds, TokenGroup::kValue, sizeof(double), read_angle},
    {orxdbNumber, TokenGroup::kValue, sizeof(double), read_number<double>, read_plain_number<double>},
};

constexpr bool is_each_type_at_its_number() {
  for (std::size_t i = 0; i < std::size(kTypes); ++i) {
    if (kTypes[i].number != static_cast<int>(i)) return false;
  }
  return true;
}
static_assert(is_each_type_at_its_number());

const Type& type_of(int type) {
  const bool is_known = type >= 0 && type < static_cast<int>(std::size(kTypes));
  return kTypes[is_known ? type : kUnknownType];
}

// The type of an orxdbDouble with the subtype: an angle, or orxdbDouble itself.
int double_type(int subtype) {
  switch (subtype) {
    case 1:
    case 6:
      return orxdbDegreesMinutesSeconds;
    case 5:
      return orxdbDegrees;
    case 7:
      return orxdbDegreesMinutesDecimalSeconds;
    case 8:
      return orxdbDegreesDecimalMinutes;
    case 9:
      return orxdbRadians;
    case 10:
      return orxdbGrads;
    default:
      return orxdbDouble;
  }
}

struct Token {
  const char* text;
  int code;
  TokenGroup tokens;
};

constexpr std::size_t kLongestToken = 3;
constexpr Token kTokens[] = {
    {"", orxdbNE, TokenGroup::kValue},         {"-", orxdbNE, TokenGroup::kValue},
    {"NE", orxdbNE, TokenGroup::kValue},       {"NC", orxdbNC, TokenGroup::kValue},
    {"ERR", orxdbERR, TokenGroup::kValue},     {"NS", orxdbNS, TokenGroup::kMeasurement},
    {"IS", orxdbIS, TokenGroup::kMeasurement},
};

// The code of a word that is a token as a whole; orxdbOrdinary for any other.
int code_of_word(std::string_view word, TokenGroup tokens) {
  if (word.size() > kLongestToken) return orxdbOrdinary;
  char text[kLongestToken + 1] = {};
  word.copy(text, kLongestToken);
  for (const Token& token : kTokens) {
    if (token.tokens <= tokens && orx::platform::compare_no_case(text, token.text) == 0) return token.code;
  }
  return orxdbOrdinary;
}

std::string_view trim_blanks(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
  return text.substr(0, text.find_last_not_of(' ') + 1);
}

int special_code(const char* text, TokenGroup tokens) {
  const std::string_view word = trim_blanks({text, strnlen(text, kSearchedLength)});
  const int code = code_of_word(word, tokens);
  if (code != orxdbOrdinary || tokens != TokenGroup::kMeasurement) return code;
  if (word.find('<') != std::string_view::npos) return orxdbBelow;
  return word.find('>') != std::string_view::npos ? orxdbAbove : orxdbOrdinary;
}

// Reads the number after the sign of orxdbBelow or orxdbAbove, or takes the limit if the text ends there.
void read_limited(Field field, const Type& type, char sign, const void* limit) {
  field.text = std::strchr(field.text, sign) + 1;
  if (*field.text != '\0') {
    type.read(field);
  } else if (limit != nullptr) {
    std::memcpy(field.dst, limit, type.value_size);
  }
}

}  // namespace

int orxdb_StrToVal(const char* text, const void* lowLimit, const void* highLimit, int type, int subtype,
                   int size, int* special, void* dst) {
  int discarded_code;
  char discarded_value[ORX_FIELD_VALUE_SIZE];
  if (special == nullptr) special = &discarded_code;
  if (text == nullptr) text = "";
  if (dst == nullptr) {
    dst = discarded_value;
    size = 0;
  }
  if (type == orxdbDouble) type = double_type(subtype);
  const Type& row = type_of(type);
  const Field field{text, type, subtype, size, dst};
  if (size > 0) std::memset(dst, 0, static_cast<std::size_t>(size));
  *special = orxdbOrdinary;
  if (row.read_plain != nullptr && row.read_plain(field)) return 0;
  orxdb_StrToSpecialVal(type, text, special);
  if (*special == orxdbOrdinary) return row.read(field);
  if (*special == orxdbBelow) read_limited(field, row, '<', lowLimit);
  if (*special == orxdbAbove) read_limited(field, row, '>', highLimit);
  return 0;
}

int orxdb_StrToSpecialVal(int type, const char* text, int* special) {
  const TokenGroup tokens = type_of(type).tokens;
  int code = orxdbOrdinary;
  if (text == nullptr) text = "";
  if (tokens != TokenGroup::kNone) code = special_code(text, tokens);
  if (special != nullptr) *special = code;
  const bool is_ordinary = tokens != TokenGroup::kNone && code == orxdbOrdinary;
  return is_ordinary ? -1 : 0;
}

int orxdb_GetDateFormat(int* order) {
  if (order != nullptr) *order = date_order;
  return 0;
}

int orxdb_SetDateFormat(int order) {
  date_order = order;
  return 0;
}
