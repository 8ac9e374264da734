// orxDateTime: one instant, with the way in which it is written.
//
// The instant is an OLE Automation date: whole days since 1899-12-30, the fraction being the time of day.
// Before that day the whole part counts backwards and the fraction still forwards: -1.25 is 1899-12-29 06:00.
// The calendar is the Gregorian one throughout, years 100 to 9999, seconds whole. Records come from
// orxDateTime_New and go with orxDateTime_Free. Functions that set a record return 0, or 1 when the fields
// are no date or time (and for a null record); why is kept in the record. Nothing here locks: the static
// defaults (date_defaults.h) are set before other threads use the family.
#pragma once

#include <orx/compat/export.h>

#include <stddef.h>
#include <stdint.h>

// What a record stands for.
enum {
  orxDateTimeNumber = 1,  // a plain number held in `value`
  orxDateTimeFull = 2,    // a date and a time
  orxDateTimeDate = 3,    // a date
  orxDateTimeTime = 4     // a time of day, a value in [0, 1)
};

// The order of the date's fields in text.
enum { orxMonthDayYear = 0, orxDayMonthYear = 1, orxYearMonthDay = 2 };

typedef struct orxDateTime {
  double value;       // OLE Automation date
  int16_t ymdFormat;  // orxMonthDayYear, ...
  int16_t kind;       // orxDateTimeNumber, ...; any other has no text and is not validated
  int32_t errorCode;  // of the last set operation, see orxDateTime_DiagnoseError
} orxDateTime;

ORX_C_BEGIN

// A record of value 0 in the default order; null when memory is exhausted.
ORX_API orxDateTime* orxDateTime_New(int kind);

// Null is allowed. Always 0.
ORX_API int orxDateTime_Free(orxDateTime* dt);

// A year below 100 is completed first: one below the two-digit pivot means 2000 and so many, any other 1900
// and so many. Fields that make no date or time leave the value as it was.
ORX_API int orxDateTime_SetYearMonthDay(orxDateTime* dt, int year, int month, int day);
ORX_API int orxDateTime_SetHourMinuteSecond(orxDateTime* dt, int hour, int minute, int second);
ORX_API int orxDateTime_SetYearMonthDayHourMinuteSecond(orxDateTime* dt, int year, int month, int day,
                                                        int hour, int minute, int second);

// To the nearest second; every field is -1 for a value that is no date. Null outputs are skipped. Always 0.
ORX_API int orxDateTime_GetYearMonthDay(const orxDateTime* dt, int* year, int* month, int* day);
ORX_API int orxDateTime_GetHourMinuteSecond(const orxDateTime* dt, int* hour, int* minute, int* second);
ORX_API int orxDateTime_GetYearMonthDayHourMinuteSecond(const orxDateTime* dt, int* year, int* month,
                                                        int* day, int* hour, int* minute, int* second);

// The value as it is, unchecked; the error code stays. Always 0.
ORX_API int orxDateTime_SetValue(orxDateTime* dt, double v);
ORX_API int orxDateTime_GetValue(const orxDateTime* dt, double* out);

// Now, in local time to the second, whatever the kind; the error code stays. Always 0.
ORX_API int orxDateTime_SetToCurrent(orxDateTime* dt);

// Now; today at 00:00:00; the time of day alone.
ORX_API double orxDateTime_GetCurrentDateTimeDouble(void);
ORX_API double orxDateTime_GetCurrentDateDouble(void);
ORX_API double orxDateTime_GetCurrentTimeDouble(void);

// 1, -1 or 0: the first value is greater, less, or neither.
ORX_API int orxDateTime_Compare(const orxDateTime* first, const orxDateTime* second);

// The record's error code; its message goes into `buf`, which has room for 23 bytes (untouched for an unknown
// code). 0 no error, 1 month, 2 year, 3 day, 4 hour, 5 minute, 6 second.
ORX_API int orxDateTime_DiagnoseError(const orxDateTime* dt, char* buf);

ORX_C_END

#if defined(__cplusplus)
static_assert(offsetof(orxDateTime, ymdFormat) == 8 && offsetof(orxDateTime, kind) == 10 &&
              offsetof(orxDateTime, errorCode) == 12 && sizeof(orxDateTime) == 16);
#endif
