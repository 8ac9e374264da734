// The process-wide settings of dates, and conversions in one call.
//
// Initially the order is year/month/day, the two-digit pivot 30 (so two digits name the years 1930 to 2029)
// and the four-digit flag off. The settings are plain variables: set them once, before other threads use
// dates.
#pragma once

#include <orx/datetime/date_time.h>

ORX_C_BEGIN

// Sets the order of records made from now on and of the conversions below (unchecked), the pivot and the
// flag. Always 0.
ORX_API int orxDateTime_SetStaticDefaults(int ymdFormat, int pivot, int fourDigitYears);
ORX_API int orxDateTime_GetStaticDefaults(int* ymdFormat, int* pivot, int* fourDigitYears);

// Gives a record an order; any but the three stores the default. A null record is ignored. Always 1.
ORX_API int orxDateTime_SetYMDFormat(orxDateTime* dt, int order);

// The order of the two conversions below alone, unchecked. Always 0.
ORX_API int orxutil_GetDateFormatEx(int* order);
ORX_API int orxutil_SetDateFormatEx(int order);

// Date and time from text: 0, or -1 with `out` unchanged. A null text reads as 0.0.
ORX_API int orxutil_StrToDateTimeEx(const char* text, double* out);

// Text from a value, as a record of that kind writes it: 0, or -1 when `buf` is null.
ORX_API int orxutil_DateTimeToStrEx(double value, char* buf, int size, int kind);

// The value of an OLE date-time object, which begins with it: 0, or -1 for a null pointer.
ORX_API int orxutil_GetOleDateTimeToDouble(const void* dateTime, double* out);

// Goes through the family once and tells nothing; for a debugger. Always 0.
ORX_API int orxDateTimeTest(void);

ORX_C_END
