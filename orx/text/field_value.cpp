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

constexpr int kNotRead = -1;
constexpr int kCut = -3;
constexpr std::size_t kMostSearched = 127;  // characters, for tokens

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

// Stores a text that is a number and nothing else, as most are: it need not be searched for tokens. A longer
// one must be, since what is searched of it may be blank, or end behind a minus.
template <typename Value>
bool read_plain_number(const Field& field) {
  const orx::Number number = orx::read_number(field.text);
  const std::ptrdiff_t length = number.end - field.text;
  if (*number.end != '\0' || length == 0 || length > static_cast<std::ptrdiff_t>(kMostSearched)) return false;
  store(field, static_cast<Value>(number.value));
  return true;
}

int read_angle(const Field& field) {
  store(field, zel_convert_str_to_ang(field.type, field.text, 0));
  return 0;
}

int read_nothing(const Field&) { return 0; }

int read_text(const Field& field) {
  if (field.size <= 0) return kCut;
  const auto size = static_cast<std::size_t>(field.size);
  const std::string_view text(field.text, strnlen(field.text, size));
  const std::size_t stored = orx::platform::truncated_size(text, size - 1);
  std::memcpy(field.dst, field.text, stored);
  return text.size() < size ? 0 : kCut;
}

int read_yes_no(const Field& field) {
  constexpr const char* kWords[] = {"True", "T", "1", "Yes", "Y", "False", "F", "0", "No", "N"};
  const auto* const word = std::find_if(std::begin(kWords), std::end(kWords), [&](const char* known) {
    return orx::platform::compare_no_case(field.text, known) == 0;
  });
  if (word == std::end(kWords)) return kNotRead;
  store(field, std::int32_t{word - kWords < 5});
  return 0;
}

int read_moment(const Field& field, int kind, const char* text) {
  orxdb_SetDateFormat(field.subtype);
  using orx::datetime::for_record;
  orxDateTime moment{0.0, for_record(date_order), for_record(kind), 0};
  if (orxDateTime_ParseString(&moment, text) != 0) return kNotRead;
  store(field, moment.value);
  return 0;
}

int read_date(const Field& field) {
  char text[50];
  ORX_snprintf(text, sizeof text - 1, "%s 00:00:00", field.text);
  return read_moment(field, orxDateTimeFull, text);
}

int read_time(const Field& field) { return read_moment(field, orxDateTimeTime, field.text); }

int read_date_time(const Field& field) { return read_moment(field, orxDateTimeFull, field.text); }

// The tokens that a field may hold: those of measurements include those of the others.
enum class Tokens { kNone, kOfValue, kOfMeasurement };

struct Type {
  Tokens tokens;
  std::size_t value_size;
  int (*read)(const Field& field);
  bool (*read_plain)(const Field& field) = nullptr;
};

constexpr Type kTypes[] = {
    {Tokens::kNone, 0, read_nothing},
    {Tokens::kOfMeasurement, sizeof(std::int32_t), read_integer},
    {Tokens::kOfMeasurement, sizeof(float), read_number<float>, read_plain_number<float>},
    {Tokens::kNone, 0, read_text},
    {Tokens::kNone, sizeof(std::int32_t), read_yes_no},
    {Tokens::kNone, 0, read_nothing},
    {Tokens::kOfValue, sizeof(double), read_date},
    {Tokens::kOfValue, sizeof(double), read_time},
    {Tokens::kOfValue, sizeof(double), read_date_time},
    {Tokens::kOfMeasurement, sizeof(double), read_number<double>, read_plain_number<double>},
    {Tokens::kOfValue, sizeof(double), read_angle},
    {Tokens::kOfValue, sizeof(double), read_angle},
    {Tokens::kOfValue, sizeof(double), read_angle},
    {Tokens::kOfValue, sizeof(double), read_angle},
    {Tokens::kOfValue, sizeof(double), read_angle},
    {Tokens::kNone, 0, read_text},
    {Tokens::kOfValue, sizeof(double), read_angle},
    {Tokens::kOfValue, sizeof(double), read_number<double>, read_plain_number<double>},
};

const Type& type_of(int type) {
  return kTypes[type >= 0 && type < static_cast<int>(std::size(kTypes)) ? type : orxdbNothing];
}

// The type that a subtype of orxdbDouble stands for.
int double_type(int subtype) {
  constexpr int kDoubleTypes[] = {orxdbDouble,
                                  orxdbDegreesMinutesSeconds,
                                  orxdbDouble,
                                  orxdbDouble,
                                  orxdbDouble,
                                  orxdbDegrees,
                                  orxdbDegreesMinutesSeconds,
                                  orxdbDegreesMinutesDecimalSeconds,
                                  orxdbDegreesDecimalMinutes,
                                  orxdbRadians,
                                  orxdbGrads};
  const bool is_known = subtype >= 0 && subtype < static_cast<int>(std::size(kDoubleTypes));
  return is_known ? kDoubleTypes[subtype] : orxdbDouble;
}

struct Token {
  const char* text;
  int code;
  Tokens tokens;
};

constexpr std::size_t kLongestToken = 3;
constexpr Token kTokens[] = {
    {"", orxdbNE, Tokens::kOfValue},         {"-", orxdbNE, Tokens::kOfValue},
    {"NE", orxdbNE, Tokens::kOfValue},       {"NC", orxdbNC, Tokens::kOfValue},
    {"ERR", orxdbERR, Tokens::kOfValue},     {"NS", orxdbNS, Tokens::kOfMeasurement},
    {"IS", orxdbIS, Tokens::kOfMeasurement},
};

int code_of_word(std::string_view word, Tokens tokens) {
  if (word.size() > kLongestToken) return orxdbOrdinary;
  char text[kLongestToken + 1] = {};
  word.copy(text, kLongestToken);
  for (const Token& token : kTokens) {
    if (token.tokens <= tokens && orx::platform::compare_no_case(text, token.text) == 0) return token.code;
  }
  return orxdbOrdinary;
}

std::string_view without_blanks(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
  return text.substr(0, text.find_last_not_of(' ') + 1);
}

int special_code(const char* text, Tokens tokens) {
  const std::string_view word = without_blanks({text, strnlen(text, kMostSearched)});
  const int code = code_of_word(word, tokens);
  if (code != orxdbOrdinary || tokens != Tokens::kOfMeasurement) return code;
  if (word.find('<') != std::string_view::npos) return orxdbBelow;
  return word.find('>') != std::string_view::npos ? orxdbAbove : orxdbOrdinary;
}

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
  int ignored;
  char unwanted[sizeof(double)];
  if (special == nullptr) special = &ignored;
  if (text == nullptr) text = "";
  if (dst == nullptr) {
    dst = unwanted;
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
  const Tokens tokens = type_of(type).tokens;
  int code = orxdbOrdinary;
  if (tokens != Tokens::kNone) code = special_code(text != nullptr ? text : "", tokens);
  if (special != nullptr) *special = code;
  return tokens == Tokens::kNone || code != orxdbOrdinary ? 0 : -1;
}

int orxdb_GetDateFormat(int* order) {
  if (order != nullptr) *order = date_order;
  return 0;
}

int orxdb_SetDateFormat(int order) {
  date_order = order;
  return 0;
}
