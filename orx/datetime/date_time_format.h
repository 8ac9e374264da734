// Writing dates and times.
//
// At most size - 1 characters are written, and a NUL; a kind without a text leaves the buffer as it was, and
// so do a null record or buffer and a size below 1. A value that is no date is written with fields of -1.
// Always 0.
#pragma once

#include <orx/datetime/date_time.h>

// The bytes of the longest text, with its NUL.
#define ORX_DATE_TEXT_SIZE 21

ORX_C_BEGIN

// "24/03/05 10:20:30", "24/03/05", "10:20:30" or a whole number, by kind; the date in the order of the
// record. Years that two digits can name (see date_defaults.h) have two digits, unless the four-digit flag is
// set.
ORX_API int orxDateTime_FormatString(const orxDateTime* dt, char* buf, int size);

// The same with the year in full and always first, and a time alone with a blank before a single-digit hour.
ORX_API int orxDateTime_FormatSpecialFullLengthString(const orxDateTime* dt, char* buf, int size);

ORX_C_END
