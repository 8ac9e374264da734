// Dates and times from text.
//
// Numbers separated by "/" are a date in the order of the record, and numbers separated by ":" are a time. A
// blank separates the two, which may come in either order. Missing fields of a date are those of today,
// missing fields of a time are 0. A date of one number is the day, a date of two numbers is month and day
// (day and month in day/month/year order). A number without "/", ":" and a blank is an hour. Text after the
// numbers is ignored. "GETDATE()" is the current date and time.
#pragma once

#include <orx/datetime/date_time.h>

// The failures of orxDateTime_ParseString.
enum {
  ORX_DATE_INVALID = 1,    // the fields are not a valid date or time
  ORX_DATE_NO_NUMBER = 7,  // the date has no number
  ORX_DATE_NO_BLANK = -1   // the text has "/" and ":" but no blank
};

ORX_C_BEGIN

// Sets the record from the text. Returns 0 on success, otherwise one of the results above. The record then
// has the error code of invalid fields, and is unchanged with the other two results.
//
// A record of kind orxDateTimeNumber is set to the number at the beginning of the text, or to 0. A null text
// returns 0 and changes nothing. A null record returns ORX_DATE_INVALID.
ORX_API int orxDateTime_ParseString(orxDateTime* dt, const char* text);

ORX_C_END
