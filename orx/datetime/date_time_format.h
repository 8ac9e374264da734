// Dates and times as text.
//
// The functions write at most `size` - 1 characters and a NUL into `buf`; a longer text is cut. A null record
// or buffer, a `size` below 1 and a record of an unknown kind leave the buffer unchanged. A value that is not
// a date is written with fields of -1. The functions always return 0.
#pragma once

#include <orx/datetime/date_time.h>

// The size of a buffer for the longest text, in bytes including the NUL.
#define ORX_DATE_TEXT_SIZE 21

ORX_C_BEGIN

// Writes "24/03/05 10:20:30", "24/03/05", "10:20:30" or a whole number, depending on the kind. The date has
// the order of the record. Years that two digits can name (see date_defaults.h) have two digits, unless the
// four-digit flag is set.
ORX_API int orxDateTime_FormatString(const orxDateTime* dt, char* buf, int size);

// Writes the same text with the year in full and first. A record of a time alone has a blank before an hour
// of one digit.
ORX_API int orxDateTime_FormatSpecialFullLengthString(const orxDateTime* dt, char* buf, int size);

ORX_C_END
