// Values of database fields from their text.
//
// The text of a number, a date or an angle may be a token instead: a measurement that was not made, or one
// below or above what could be measured ("<0.05"). A token has a special code of its own; a caller looks at
// the code first, then at the value.
#pragma once

#include <orx/compat/export.h>

ORX_C_BEGIN

// The types of fields. A value is stored as its type, whatever size a caller gives, so `dst` has space for
// it: for types 1, 2 and 4 that is 4 bytes, for the types of a double 8, for text the size that is given.
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

// Bytes that hold the value of any type except the texts.
enum { ORX_FIELD_VALUE_SIZE = 8 };

// The special codes, with their tokens in any case and with blanks around them. The first two are codes of
// orxdbInteger, orxdbFloat and orxdbDouble; so are orxdbNS and orxdbIS.
enum {
  orxdbOrdinary = 0,
  orxdbBelow = 1,  // a "<" anywhere in the first 127 characters
  orxdbAbove = 2,  // else a ">" there
  orxdbNC = 3,     // "NC"
  orxdbNS = 4,     // "NS"
  orxdbIS = 5,     // "IS"
  orxdbNE = 6,     // "NE", "-" or nothing
  orxdbERR = 7     // "ERR"
};

// Reads the text of a field into `dst`, which need not be aligned, after clearing the first `size` bytes of
// it. A size below that of the value cuts nothing: the whole value is stored.
//
// The subtype of an orxdbDouble that is an angle is 5 (degrees), 1 or 6 (degrees, minutes and seconds), 7
// (the same with decimal seconds), 8 (degrees and minutes), 9 (radians) or 10 (grads). The subtype of dates
// and times is the order of the date (orxMonthDayYear, ...), which becomes the database's; in an unknown
// order, only dates that give the day alone can be read.
//
// Numbers follow the C library's rules with a decimal point in every locale: what follows the number is
// ignored, none is 0, and one beyond the range of its type is the nearest integer or infinite. The value of
// orxdbBelow and orxdbAbove is the number behind the sign, or, when the text ends there, the one that
// `lowLimit` or `highLimit` points to, which is of the field's type (null: 0). Other tokens are 0. Yes and no
// are "True", "T", "1", "Yes", "Y" and "False", "F", "0", "No", "N" in any case.
//
// Texts are cut to the whole characters among their first size - 1 bytes; all other bytes of `dst` up to
// `size` are NUL.
//
// Returns 0; -1 for a word that is neither yes nor no, and for text that is not a date or time, with
// no value stored; -3 for a text that is cut, which includes every text when `size` is 0 or less. `special`
// is always written. A null text is the empty one; `special` may be null; with a null `dst`, the value is not
// stored and `size` counts as 0.
ORX_API int orxdb_StrToVal(const char* text, const void* lowLimit, const void* highLimit, int type,
                           int subtype, int size, int* special, void* dst);

// 0 and the code of a token, which a text of fields without tokens (code 0) counts as too; -1 and 0 for an
// ordinary text.
ORX_API int orxdb_StrToSpecialVal(int type, const char* text, int* special);

// The order in which database dates are read, initially orxDayMonthYear; set unchecked. One for the process,
// and unguarded. Always 0.
ORX_API int orxdb_GetDateFormat(int* order);
ORX_API int orxdb_SetDateFormat(int order);

ORX_C_END
