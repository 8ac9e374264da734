// Reading dates and times.
//
// Numbers separated by "/" are a date, in the order of the record; numbers separated by ":" are a time; a
// blank stands between the two, in whichever order. Missing fields of a date are today's, missing fields of a
// time are 0. One number of a date is the day, two are month and day (in day/month/year order: day and
// month); a number on its own is an hour. What follows the numbers is ignored. "GETDATE()" is now.
#pragma once

#include <orx/datetime/date_time.h>

ORX_C_BEGIN

// 0: read and set. 1: the fields make no date or time, the record says which. 7: no number in the date, -1:
// "/" and ":" without a blank, both with the record unchanged. A plain number is read as far as it goes (0.0
// if there is none). A null text gives 0 and changes nothing; a null record gives 1.
ORX_API int orxDateTime_ParseString(orxDateTime* dt, const char* text);

ORX_C_END
