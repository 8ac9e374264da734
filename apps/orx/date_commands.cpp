#include <orx/datetime/date_defaults.h>
#include <orx/datetime/date_time.h>
#include <orx/datetime/date_time_format.h>
#include <orx/datetime/date_time_parse.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <new>
#include <span>
#include <string>
#include <vector>

#include "commands.h"
#include "failure.h"
#include "numbers.h"

namespace orx::cli {
namespace {

struct FreeRecord {
  void operator()(orxDateTime* record) const { orxDateTime_Free(record); }
};

using DateTime = std::unique_ptr<orxDateTime, FreeRecord>;

struct Choice {
  const char* word;
  int number;
};

// The first choice is the default.
constexpr Choice kOrders[] = {{"ymd", orxYearMonthDay}, {"mdy", orxMonthDayYear}, {"dmy", orxDayMonthYear}};
constexpr Choice kKinds[] = {{"datetime", orxDateTimeFull},
                             {"date", orxDateTimeDate},
                             {"time", orxDateTimeTime},
                             {"number", orxDateTimeNumber}};

// The number of a word; the empty word is the first choice.
int number_of(std::span<const Choice> choices, const std::string& word) {
  if (word.empty()) return choices.front().number;
  return std::ranges::find_if(choices, [&](const Choice& choice) { return choice.word == word; })->number;
}

std::vector<std::string> words_of(std::span<const Choice> choices) {
  std::vector<std::string> words;
  for (const Choice& choice : choices) words.emplace_back(choice.word);
  return words;
}

DateTime new_record(const DateArguments& arguments) {
  DateTime record(orxDateTime_New(number_of(kKinds, arguments.kind)));
  if (record == nullptr) throw std::bad_alloc();
  orxDateTime_SetYMDFormat(record.get(), number_of(kOrders, arguments.order));
  return record;
}

using Formatter = int (*)(const orxDateTime* dt, char* buf, int size);

std::string format_text(const DateTime& record, Formatter format) {
  std::array<char, ORX_DATE_TEXT_SIZE> text{};
  format(record.get(), text.data(), static_cast<int>(text.size()));
  return text.data();
}

// `result` is that of orxDateTime_ParseString. The library has a text only for some invalid fields, such as
// "Error: Invalid day.".
std::string reason_of(const DateTime& record, int result) {
  if (result == ORX_DATE_NO_NUMBER) return "the date contains no number";
  if (result == ORX_DATE_NO_BLANK) return "a space is needed between the date and the time";
  std::array<char, ORX_DATE_ERROR_TEXT_SIZE> error{};
  const bool is_known = orxDateTime_DiagnoseError(record.get(), error.data()) != 0;
  return is_known ? error.data() : "it is not a date or a time";
}

Record date_record(const DateTime& record) {
  int year, month, day, hour, minute, second;
  orxDateTime_GetYearMonthDayHourMinuteSecond(record.get(), &year, &month, &day, &hour, &minute, &second);
  Record shown{{"Value", record->value},
               {"Text", format_text(record, orxDateTime_FormatString)},
               {"FullText", format_text(record, orxDateTime_FormatSpecialFullLengthString)}};
  const Record date{{"Year", year}, {"Month", month}, {"Day", day}};
  const Record time{{"Hour", hour}, {"Minute", minute}, {"Second", second}};
  const int kind = record->kind;
  if (kind == orxDateTimeFull || kind == orxDateTimeDate) shown.insert(shown.end(), date.begin(), date.end());
  if (kind == orxDateTimeFull || kind == orxDateTimeTime) shown.insert(shown.end(), time.begin(), time.end());
  return shown;
}

void require_in_range(const DateTime& record, const std::string& text) {
  constexpr double kTooLarge = 9223372036854775808.0;  // 2^63: numbers are formatted as whole numbers
  if (record->kind == orxDateTimeNumber) {
    if (!(std::abs(record->value) < kTooLarge)) throw Failure(text, "it is too large");
    return;
  }
  int year;
  orxDateTime_GetYearMonthDay(record.get(), &year, nullptr, nullptr);
  if (year == -1) throw Failure(text, "it is outside the years 100 to 9999");
}

}  // namespace

std::vector<std::string> date_orders() { return words_of(kOrders); }

std::vector<std::string> date_kinds() { return words_of(kKinds); }

void date_parse(const DateArguments& arguments, std::ostream& out) {
  const DateTime record = new_record(arguments);
  const int result = orxDateTime_ParseString(record.get(), arguments.text.c_str());
  if (result != 0) throw Failure(arguments.text, reason_of(record, result));
  require_in_range(record, arguments.text);
  write_record(out, date_record(record), arguments.format);
}

void date_format(const DateArguments& arguments, std::ostream& out) {
  const DateTime record = new_record(arguments);
  double value = 0;
  if (!read_number(arguments.text, value)) throw Failure(arguments.text, "it is not a number");
  orxDateTime_SetValue(record.get(), value);
  require_in_range(record, arguments.text);
  if (arguments.format == Format::kJson) return write_record(out, date_record(record), Format::kJson);
  const Formatter format =
      arguments.full ? orxDateTime_FormatSpecialFullLengthString : orxDateTime_FormatString;
  out << format_text(record, format) << '\n';
}

void date_now(const DateArguments& arguments, std::ostream& out) {
  const DateTime record = new_record(arguments);
  orxDateTime_SetToCurrent(record.get());
  write_record(out, date_record(record), arguments.format);
}

}  // namespace orx::cli
