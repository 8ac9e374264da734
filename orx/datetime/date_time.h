// orxDateTime: a date and time, with the order in which its date is written.
//
// The value is an OLE Automation date: whole days since 1899-12-30, and the time of day as a fraction of a
// day. Before that day the whole part counts backwards, while the fraction still counts forwards: -1.25 is
// 1899-12-29 06:00. The calendar is the Gregorian one throughout, for the years 100 to 9999, with whole
// seconds.
//
// orxDateTime_New creates a record, which the caller releases with orxDateTime_Free. Functions that set a
// record from fields return 0, or 1 if the record is null or the fields are not a valid date or time; the
// record then keeps the reason as its error code.
//
// Different threads may use different records. The static defaults (date_defaults.h) are not locked: set them
// before other threads use dates.
#pragma once

#include <orx/compat/export.h>

#include <stddef.h>
#include <stdint.h>

// The kind of a record: what its value means.
enum {
  orxDateTimeNumber = 1,  // a plain number
  orxDateTimeFull = 2,    // a date and a time
  orxDateTimeDate = 3,    // a date
  orxDateTimeTime = 4     // a time of day, at least 0 and below 1
};

// The order of day, month and year in text.
enum { orxMonthDayYear = 0, orxDayMonthYear = 1, orxYearMonthDay = 2 };

typedef struct orxDateTime {
  double value;       // OLE Automation date
  int16_t ymdFormat;  // orxMonthDayYear, ...
  int16_t kind;       // orxDateTimeNumber, ...; a record of another kind has no text
  int32_t errorCode;  // of the last set from fields, see orxDateTime_DiagnoseError
} orxDateTime;

// The size of a buffer for the message of any error code, in bytes including the NUL.
#define ORX_DATE_ERROR_TEXT_SIZE 23

ORX_C_BEGIN

// Creates a record with the value 0 and the default order, or returns null when memory runs out. `kind` is
// not checked.
ORX_API orxDateTime* orxDateTime_New(int kind);

// Releases the record. Null is allowed. Always returns 0.
ORX_API int orxDateTime_Free(orxDateTime* dt);

// Set the value from fields: a date at midnight, a time of day alone, or a date and time. A year below the
// two-digit pivot (but not below 0) gets 2000 added, any other year below 100 gets 1900 added. Invalid fields
// leave the value unchanged.
ORX_API int orxDateTime_SetYearMonthDay(orxDateTime* dt, int year, int month, int day);
ORX_API int orxDateTime_SetHourMinuteSecond(orxDateTime* dt, int hour, int minute, int second);
ORX_API int orxDateTime_SetYearMonthDayHourMinuteSecond(orxDateTime* dt, int year, int month, int day,
                                                        int hour, int minute, int second);

// Get the fields of the value, rounded to the nearest second, with the year in full. If the record is null or
// the value is not a date, every field is -1. Null outputs are skipped. Always return 0.
ORX_API int orxDateTime_GetYearMonthDay(const orxDateTime* dt, int* year, int* month, int* day);
ORX_API int orxDateTime_GetHourMinuteSecond(const orxDateTime* dt, int* hour, int* minute, int* second);
ORX_API int orxDateTime_GetYearMonthDayHourMinuteSecond(const orxDateTime* dt, int* year, int* month,
                                                        int* day, int* hour, int* minute, int* second);

// Set and get the value without a check. The error code is unchanged, and null pointers are ignored. Always
// return 0.
ORX_API int orxDateTime_SetValue(orxDateTime* dt, double v);
ORX_API int orxDateTime_GetValue(const orxDateTime* dt, double* out);

// Sets the value to the current local date and time, in whole seconds, for every kind. The error code is
// unchanged, and a null record is ignored. Always returns 0.
ORX_API int orxDateTime_SetToCurrent(orxDateTime* dt);

// Return the current local date and time, today at 00:00:00, and the current time of day alone.
ORX_API double orxDateTime_GetCurrentDateTimeDouble(void);
ORX_API double orxDateTime_GetCurrentDateDouble(void);
ORX_API double orxDateTime_GetCurrentTimeDouble(void);

// Returns 1 if the value of `first` is greater, -1 if that of `second` is greater, and 0 otherwise, also for
// a null record.
ORX_API int orxDateTime_Compare(const orxDateTime* first, const orxDateTime* second);

// Returns the record's error code and writes its message into `buf`, a buffer of ORX_DATE_ERROR_TEXT_SIZE
// bytes, which may be null. The codes are 0 no error, 1 invalid month, 2 year, 3 day, 4 hour, 5 minute, 6
// second. An unknown code leaves `buf` unchanged. A null record gives 0 and no message.
ORX_API int orxDateTime_DiagnoseError(const orxDateTime* dt, char* buf);

ORX_C_END

#if defined(__cplusplus)
static_assert(offsetof(orxDateTime, ymdFormat) == 8 && offsetof(orxDateTime, kind) == 10 &&
              offsetof(orxDateTime, errorCode) == 12 && sizeof(orxDateTime) == 16);
#endif
