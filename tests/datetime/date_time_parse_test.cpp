#include <orx/datetime/date_time_parse.h>

#include <gtest/gtest.h>
#include <orx/datetime/date_time_format.h>
#include <orx/platform/clock.h>

#include <string>

namespace {

// The result and the text of the record, with the year in full.
std::string parsed(const char* text, int kind, int order) {
  orxDateTime record{-1, static_cast<int16_t>(order), static_cast<int16_t>(kind), 42};
  const int result = orxDateTime_ParseString(&record, text);
  char written[64] = "";
  orxDateTime_FormatSpecialFullLengthString(&record, written, sizeof written);
  if (result == 1) return "1 error " + std::to_string(record.errorCode);
  return std::to_string(result) + (record.value == -1 ? " unchanged" : std::string(" ") + written);
}

TEST(DateTimeParse, ReadsDateAndTimeInEitherOrder) {
  struct Row {
    const char *text, *outcome;
    int kind = orxDateTimeFull, order = orxYearMonthDay;
  };
  orx::platform::replace_clock([] { return orx::platform::LocalTime{2024, 6, 15, 8, 9, 10}; });
  for (const auto& c :
       {Row{"10:20:30 2024/03/05", "0 2024/03/05 10:20:30"}, Row{"2024/03/05xyz", "0 2024/03/05 00:00:00"},
        Row{"10:20", "0 2024/06/15 10:20:00"}, Row{"3/5", "0 2024/03/05 00:00:00"},
        Row{"3/5", "0 2024/05/03 00:00:00", orxDateTimeFull, orxDayMonthYear},
        Row{"5 12", "0 2024/06/05 12:00:00", orxDateTimeFull, 3}, Row{"7 2024/3/5", "0 2024/03/05 07:00:00"},
        Row{"10:20 PM", "0 2024/06/10 00:00:00"}, Row{"+24/ 3/-5", "1 error 3"},
        Row{"+24/ 3/5", "0 2024/03/05 03:00:00"},  // the hour follows the blank
        Row{" 2024/3/5", "1 error 4"}, Row{"", "0 2024/06/15 00:00:00"}, Row{"12/25/2023", "1 error 1"},
        Row{"2023/12/25", "1 error 1", orxDateTimeFull, 3}, Row{"4294967297/1/1", "1 error 2"},
        Row{"GETDATE()", "0 2024/06/15 08:09:10"}, Row{"GETDATE()", "0 2024/06/15", orxDateTimeDate},
        Row{"GETDATE()", "0  8:09:10", orxDateTimeTime},
        Row{"2024/03/05 10:20:30", "0 10:20:30", orxDateTimeTime}})
    EXPECT_EQ(parsed(c.text, c.kind, c.order), c.outcome) << c.text;
  EXPECT_EQ(parsed(nullptr, orxDateTimeFull, orxYearMonthDay), "0 unchanged");
  orx::platform::replace_clock(nullptr);
}

}  // namespace
