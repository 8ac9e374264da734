// The process-wide settings of dates, and conversions that need no record.
//
// Initially the order is year/month/day, the two-digit pivot is 30, so that two digits name the years 1930 to
// 2029, and the four-digit flag is off. The settings are not locked: set them before other threads use dates.
#pragma once

#include <orx/datetime/date_time.h>

ORX_C_BEGIN

// Set and get the settings. `ymdFormat` is the order of new records and of the conversions below; it is not
// checked. Two-digit years below `pivot` are years from 2000 on, all others years from 1900 on. If
// `fourDigitYears` is not 0, years are written in full. Null outputs are skipped. Always return 0.
ORX_API int orxDateTime_SetStaticDefaults(int ymdFormat, int pivot, int fourDigitYears);
ORX_API int orxDateTime_GetStaticDefaults(int* ymdFormat, int* pivot, int* fourDigitYears);

// Sets the order of a record. An unknown order means the default order. A null record is ignored. Always
// returns 1.
ORX_API int orxDateTime_SetYMDFormat(orxDateTime* dt, int order);

// Get and set the order of the two conversions below. A new order is not checked, and a null `order` is
// ignored. Always return 0.
ORX_API int orxutil_GetDateFormatEx(int* order);
ORX_API int orxutil_SetDateFormatEx(int order);

// Reads a date and time as orxDateTime_ParseString does and stores its value in `*out`. A null text gives
// 0.0. Returns 0, or -1 for a null `out` and for text that is not a date and time; `*out` is then unchanged.
ORX_API int orxutil_StrToDateTimeEx(const char* text, double* out);

// Writes the value as orxDateTime_FormatString writes a record of that kind. Returns 0, or -1 if `buf` is
// null.
ORX_API int orxutil_DateTimeToStrEx(double value, char* buf, int size, int kind);

// Stores the value of an OLE date-time object, which is its first member, in `*out`. Returns 0, or -1 for a
// null pointer.
ORX_API int orxutil_GetOleDateTimeToDouble(const void* dateTime, double* out);

// Calls the date functions once, for stepping through in a debugger. Reports nothing and always returns 0.
ORX_API int orxDateTimeTest(void);

ORX_C_END
