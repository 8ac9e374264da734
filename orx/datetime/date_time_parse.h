// Dates and times from text.
//
// Numbers separated by "/" are a date in the order of the record, and numbers separated by ":" are a time. A
// blank separates the two, which may come in either order. Missing fields of a date are those of today,
// missing fields of a time are 0. A date of one number is the day, a date of two numbers is month and day
// (day and month in day/month/year order). A number without "/", ":" and a blank is an hour. Text after the
// numbers is ignored. "GETDATE()" is the current date and time.
#pragma once

#include <orx/datetime/date_time.h>

ORX_C_BEGIN

// Sets the record from the text. Returns 0 on success; 1 if the fields are not a valid date or time, and the
// record then has the error code; 7 if the date has no number; -1 if the text has "/" and ":" but no blank.
// With 7 and -1 the record is unchanged.
//
// A record of kind orxDateTimeNumber is set to the number at the beginning of the text, or to 0. A null text
// returns 0 and changes nothing. A null record returns 1.
ORX_API int orxDateTime_ParseString(orxDateTime* dt, const char* text);

ORX_C_END
