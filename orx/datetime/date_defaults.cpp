#include <orx/datetime/date_defaults.h>

#include <orx/datetime/date_time_format.h>
#include <orx/datetime/date_time_parse.h>
#include <orx/datetime/static_defaults.h>

#include <cstring>
#include <initializer_list>

namespace orx::datetime {

constinit StaticDefaults static_defaults;

}  // namespace orx::datetime

namespace {

using orx::datetime::static_defaults;

orxDateTime conversion_record(int kind) {
  using orx::datetime::to_record_field;
  return {0.0, to_record_field(static_defaults.conversion_order), to_record_field(kind), 0};
}

void put(int* output, int value) {
  if (output != nullptr) *output = value;
}

}  // namespace

int orxDateTime_SetStaticDefaults(int ymdFormat, int pivot, int fourDigitYears) {
  static_defaults = {ymdFormat, ymdFormat, pivot, fourDigitYears != 0};
  return 0;
}

int orxDateTime_GetStaticDefaults(int* ymdFormat, int* pivot, int* fourDigitYears) {
  put(ymdFormat, static_defaults.order);
  put(pivot, static_defaults.pivot);
  put(fourDigitYears, static_defaults.four_digit_years ? 1 : 0);
  return 0;
}

int orxDateTime_SetYMDFormat(orxDateTime* dt, int order) {
  const bool is_known = order >= orxMonthDayYear && order <= orxYearMonthDay;
  const int new_order = is_known ? order : static_defaults.order;
  if (dt != nullptr) dt->ymdFormat = orx::datetime::to_record_field(new_order);
  return 1;
}

int orxutil_GetDateFormatEx(int* order) {
  put(order, static_defaults.conversion_order);
  return 0;
}

int orxutil_SetDateFormatEx(int order) {
  static_defaults.conversion_order = order;
  return 0;
}

int orxutil_StrToDateTimeEx(const char* text, double* out) {
  orxDateTime record = conversion_record(orxDateTimeFull);
  if (out == nullptr || orxDateTime_ParseString(&record, text) != 0) return -1;
  *out = record.value;
  return 0;
}

int orxutil_DateTimeToStrEx(double value, char* buf, int size, int kind) {
  if (buf == nullptr) return -1;
  orxDateTime record = conversion_record(kind);
  record.value = value;
  return orxDateTime_FormatString(&record, buf, size);
}

int orxutil_GetOleDateTimeToDouble(const void* dateTime, double* out) {
  if (dateTime == nullptr || out == nullptr) return -1;
  std::memcpy(out, dateTime, sizeof *out);
  return 0;
}

int orxDateTimeTest() {
  orxDateTime* record = orxDateTime_New(orxDateTimeFull);
  if (record == nullptr) return 0;
  char text[100];
  int fields[6];
  orxDateTime_SetYearMonthDayHourMinuteSecond(record, 99, 1, 2, 3, 4, 5);
  orxDateTime_GetYearMonthDayHourMinuteSecond(record, &fields[0], &fields[1], &fields[2], &fields[3],
                                              &fields[4], &fields[5]);
  orxDateTime_FormatString(record, text, sizeof text);
  for (const int order : {orxMonthDayYear, orxYearMonthDay}) {
    orxDateTime_SetYMDFormat(record, order);
    orxDateTime_FormatString(record, text, sizeof text);
  }
  orxDateTime_SetToCurrent(record);
  orxDateTime_FormatString(record, text, sizeof text);
  orxDateTime_ParseString(record, text);
  if (orxDateTime_SetYearMonthDayHourMinuteSecond(record, 80, 2, 29, 3, 4, 5) != 0) {
    orxDateTime_DiagnoseError(record, text);
  }
  return orxDateTime_Free(record);
}
