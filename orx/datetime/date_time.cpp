#include <orx/datetime/date_time.h>

#include <orx/base/calendar.h>
#include <orx/base/errno_guard.h>
#include <orx/datetime/static_defaults.h>
#include <orx/platform/clock.h>

#include <cstring>
#include <iterator>
#include <new>

namespace {

using orx::calendar::Fields;

enum Error {
  kNoError,
  kInvalidMonth,
  kInvalidYear,
  kInvalidDay,
  kInvalidHour,
  kInvalidMinute,
  kInvalidSecond
};

constexpr const char* kErrorTexts[] = {
    "No errors.",           "Error: Invalid month.",  "Error: Invalid year.",  "Error: Invalid day.",
    "Error: Invalid hour.", "Error: Invalid minute.", "Error: Invalid second."};

bool has_date(const orxDateTime& dt) { return dt.kind == orxDateTimeFull || dt.kind == orxDateTimeDate; }
bool has_time(const orxDateTime& dt) { return dt.kind == orxDateTimeFull || dt.kind == orxDateTimeTime; }

// Returns why the fields are not a valid date. The diagnosis takes every fourth year for a leap year, so
// February 29 of a year such as 1900 finds no invalid field, and is reported as an invalid month. Hosts know
// these codes.
Error diagnose_date(const Fields& fields) {
  if (orx::calendar::is_date(fields.year, fields.month, fields.day)) return kNoError;
  if (fields.year < orx::calendar::kFirstYear || fields.year > orx::calendar::kLastYear) return kInvalidYear;
  if (fields.month < 1 || fields.month > 12) return kInvalidMonth;
  const bool is_long_february = fields.month == 2 && fields.year % 4 == 0;
  const int last_day = is_long_february ? 29 : orx::calendar::kDaysOfMonths[fields.month - 1];
  return fields.day < 1 || fields.day > last_day ? kInvalidDay : kInvalidMonth;
}

Error diagnose_time(const Fields& fields) {
  if (fields.hour < 0 || fields.hour > 23) return kInvalidHour;
  if (fields.minute < 0 || fields.minute > 59) return kInvalidMinute;
  return fields.second < 0 || fields.second > 59 ? kInvalidSecond : kNoError;
}

// Checks only the fields that belong to the kind of the record. Fields that were refused may therefore give
// no error.
Error diagnose(const orxDateTime& dt, const Fields& fields) {
  Error error = has_date(dt) ? diagnose_date(fields) : kNoError;
  if (error == kNoError && has_time(dt)) error = diagnose_time(fields);
  return error;
}

int set_fields(orxDateTime* dt, Fields fields) {
  if (dt == nullptr) return 1;
  fields.year = orx::datetime::complete_year(fields.year);
  const bool is_valid = orx::calendar::to_value(fields, dt->value);
  dt->errorCode = is_valid ? kNoError : diagnose(*dt, fields);
  return is_valid ? 0 : 1;
}

Fields fields_of(const orxDateTime* dt) {
  Fields fields{-1, -1, -1, -1, -1, -1};
  if (dt != nullptr) orx::calendar::to_fields(dt->value, fields);
  return fields;
}

void put(int* output, int value) {
  if (output != nullptr) *output = value;
}

Fields now() {
  const orx::platform::LocalTime time = orx::platform::local_time();
  return {time.year, time.month, time.day, time.hour, time.minute, time.second};
}

double value_of(const Fields& fields) {
  double value = 0;
  orx::calendar::to_value(fields, value);
  return value;
}

}  // namespace

orxDateTime* orxDateTime_New(int kind) {
  using orx::datetime::to_record_field;
  const std::int16_t order = to_record_field(orx::datetime::static_defaults.order);
  const orx::ErrnoGuard errno_guard;
  return new (std::nothrow) orxDateTime{0.0, order, to_record_field(kind), kNoError};
}

int orxDateTime_Free(orxDateTime* dt) {
  delete dt;
  return 0;
}

int orxDateTime_SetYearMonthDay(orxDateTime* dt, int year, int month, int day) {
  return set_fields(dt, {year, month, day, 0, 0, 0});
}

int orxDateTime_SetHourMinuteSecond(orxDateTime* dt, int hour, int minute, int second) {
  if (dt == nullptr) return 1;
  Fields fields;
  fields.hour = hour;
  fields.minute = minute;
  fields.second = second;
  if (orx::calendar::to_value(fields, dt->value)) {
    dt->errorCode = kNoError;
    return 0;
  }
  // A record of date and time is diagnosed with the year 0, since only its time is set. Its year is therefore
  // the first invalid field.
  dt->errorCode = kNoError;
  if (dt->kind == orxDateTimeFull) dt->errorCode = kInvalidYear;
  if (dt->kind == orxDateTimeTime) dt->errorCode = diagnose_time(fields);
  return 1;
}

int orxDateTime_SetYearMonthDayHourMinuteSecond(orxDateTime* dt, int year, int month, int day, int hour,
                                                int minute, int second) {
  return set_fields(dt, {year, month, day, hour, minute, second});
}

int orxDateTime_GetYearMonthDay(const orxDateTime* dt, int* year, int* month, int* day) {
  return orxDateTime_GetYearMonthDayHourMinuteSecond(dt, year, month, day, nullptr, nullptr, nullptr);
}

int orxDateTime_GetHourMinuteSecond(const orxDateTime* dt, int* hour, int* minute, int* second) {
  return orxDateTime_GetYearMonthDayHourMinuteSecond(dt, nullptr, nullptr, nullptr, hour, minute, second);
}

int orxDateTime_GetYearMonthDayHourMinuteSecond(const orxDateTime* dt, int* year, int* month, int* day,
                                                int* hour, int* minute, int* second) {
  const Fields fields = fields_of(dt);
  put(year, fields.year);
  put(month, fields.month);
  put(day, fields.day);
  put(hour, fields.hour);
  put(minute, fields.minute);
  put(second, fields.second);
  return 0;
}

int orxDateTime_SetValue(orxDateTime* dt, double v) {
  if (dt != nullptr) dt->value = v;
  return 0;
}

int orxDateTime_GetValue(const orxDateTime* dt, double* out) {
  if (dt != nullptr && out != nullptr) *out = dt->value;
  return 0;
}

int orxDateTime_SetToCurrent(orxDateTime* dt) { return orxDateTime_SetValue(dt, value_of(now())); }

double orxDateTime_GetCurrentDateTimeDouble() { return value_of(now()); }

double orxDateTime_GetCurrentDateDouble() {
  const Fields today = now();
  return value_of({today.year, today.month, today.day, 0, 0, 0});
}

double orxDateTime_GetCurrentTimeDouble() {
  const Fields today = now();
  Fields time;
  time.hour = today.hour;
  time.minute = today.minute;
  time.second = today.second;
  return value_of(time);
}

int orxDateTime_Compare(const orxDateTime* first, const orxDateTime* second) {
  if (first == nullptr || second == nullptr) return 0;
  if (first->value > second->value) return 1;
  return second->value > first->value ? -1 : 0;
}

int orxDateTime_DiagnoseError(const orxDateTime* dt, char* buf) {
  if (dt == nullptr) return 0;
  const int code = static_cast<int16_t>(dt->errorCode);  // the message depends on the lower 16 bits alone
  if (buf != nullptr && code >= 0 && code < static_cast<int>(std::size(kErrorTexts))) {
    std::memcpy(buf, kErrorTexts[code], std::strlen(kErrorTexts[code]) + 1);
  }
  return dt->errorCode;
}
