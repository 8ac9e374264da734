// Values of database fields from their text.
//
// The text of a number, a date or an angle may be a token instead: a measurement that was not made, or a
// value below or above the measurable range ("<0.05"). Each token has a special code. Callers check the
// special code first, then the value.
//
// The order of dates is one variable for the process, which conversions of dates and times set and no lock
// guards. All other conversions may run in any thread. errno is unchanged.
#pragma once

#include <orx/compat/export.h>

ORX_C_BEGIN

// The types of fields. Each type determines the size of its value; only texts have the size that the caller
// gives.
enum {
  orxdbInteger = 1,                 // 4 bytes: int32_t
  orxdbFloat = 2,                   // 4 bytes: float
  orxdbText = 3,                    // char[size], with a NUL
  orxdbYesNo = 4,                   // 4 bytes: int32_t, 1 or 0
  orxdbNothing = 5,                 // 0 bytes
  orxdbDate = 6,                    // 8 bytes: double, an OLE Automation date
  orxdbTime = 7,                    // 8 bytes: double, the time of day as a part of a day
  orxdbDateTime = 8,                // 8 bytes: double, an OLE Automation date
  orxdbDouble = 9,                  // 8 bytes: double, or by its subtype an angle
  orxdbDegrees = 10,                // 8 bytes: double, radians; from here on the numbers of the angle modes
  orxdbDegreesMinutesSeconds = 11,  // 8 bytes: double, radians
  orxdbDegreesDecimalMinutes = 12,  // 8 bytes: double, radians
  orxdbRadians = 13,                // 8 bytes: double
  orxdbGrads = 14,                  // 8 bytes: double, radians
  orxdbLongText = 15,               // char[size], as orxdbText
  orxdbDegreesMinutesDecimalSeconds = 16,  // 8 bytes: double, radians
  orxdbNumber = 17                         // 8 bytes: double
};

// The greatest size of a value that is not a text, in bytes.
#define ORX_FIELD_VALUE_SIZE 8

// The special codes and their tokens, which may have blanks around them and letters in any case. The types
// orxdbInteger, orxdbFloat and orxdbDouble have all of these codes. Dates, times, angles and orxdbNumber do
// not have orxdbBelow, orxdbAbove, orxdbNS and orxdbIS. All other types have no tokens.
enum {
  orxdbOrdinary = 0,
  orxdbBelow = 1,  // a "<" anywhere in the first 127 characters
  orxdbAbove = 2,  // a ">" in the first 127 characters, and no "<"
  orxdbNC = 3,     // "NC"
  orxdbNS = 4,     // "NS"
  orxdbIS = 5,     // "IS"
  orxdbNE = 6,     // "NE", "-" or blank text
  orxdbERR = 7     // "ERR"
};

// The failures of orxdb_StrToVal.
enum {
  ORX_FIELD_NOT_READ = -1,  // a word that is neither yes nor no, or text that is not a date or time
  ORX_FIELD_CUT = -3        // a text was cut; includes every text when the size is 0 or less
};

// Converts the text of a field of type `type` and stores the value in `dst`. A null text is the empty text.
//
// `dst` has space for the whole value, at any alignment. First its first `size` bytes are cleared. A `size`
// below that of the value does not cut the value. With a null `dst` nothing is stored, and `size` counts as
// 0.
//
// `special` receives the special code and may be null. For orxdbBelow and orxdbAbove the value is the number
// after the sign. If the text ends there, it is the value that `lowLimit` or `highLimit` points to, which has
// the type of the field; null means 0. All other tokens have the value 0.
//
// `subtype` depends on the type. An orxdbDouble is an angle if its subtype is 5 (degrees), 1 or 6 (degrees,
// minutes and seconds), 7 (the same with decimal seconds), 8 (degrees and minutes), 9 (radians) or 10
// (grads). For dates and times the subtype is the order of the date (orxMonthDayYear, ...), which becomes the
// database's order. In an unknown order, only dates that consist of the day alone can be read.
//
// Numbers follow the rules of the C library, with a decimal point in every locale. Text after the number is
// ignored, and text without a number is 0. An integer beyond the range is the nearest one, any other number
// beyond the range is infinite. The words of orxdbYesNo are "True", "T", "1", "Yes", "Y" and "False", "F",
// "0", "No", "N" in any case. A text is cut to the whole characters among its first `size` - 1 bytes.
//
// Returns 0, ORX_FIELD_NOT_READ without storing a value, or ORX_FIELD_CUT.
ORX_API int orxdb_StrToVal(const char* text, const void* lowLimit, const void* highLimit, int type,
                           int subtype, int size, int* special, void* dst);

// Stores the special code of the text in `*special`, which may be null. Returns 0 for a token, -1 for an
// ordinary value, and 0 for every text of a type that has no tokens. A null text is the empty text.
ORX_API int orxdb_StrToSpecialVal(int type, const char* text, int* special);

// Get and set the order in which the dates of database fields are read, initially orxDayMonthYear. A new
// order is not checked, and a null `order` is ignored. Always return 0.
ORX_API int orxdb_GetDateFormat(int* order);
ORX_API int orxdb_SetDateFormat(int order);

ORX_C_END
