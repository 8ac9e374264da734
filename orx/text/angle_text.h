// Angles as text, in one of six notations.
//
// An angle is in radians. Its text has one to three columns of fixed width, padded with blanks, that colons
// separate; the packed form of a text has no colons. Packed text can be read again as long as the whole
// degrees and their sign fit in four characters. Numbers have a decimal point in every locale.
#pragma once

#include <orx/compat/export.h>

ORX_C_BEGIN

// The bytes of the longest text of an angle, with its NUL.
#define ORX_ANGLE_TEXT_SIZE 50

// The notations, with 45.5 degrees as they are written.
enum {
  zelDegrees = 10,                      // " 45.50000000"
  zelDegreesMinutesSeconds = 11,        // "  45:30: 0", packed "  4530 0"
  zelDegreesDecimalMinutes = 12,        // "  45:30.00000", packed "  4530.00000"
  zelRadians = 13,                      // "  0.79412481"
  zelGrads = 14,                        // " 50.55555556"
  zelNoAngle = 15,                      // has no text, reads as 0
  zelDegreesMinutesDecimalSeconds = 16  // "  45:30: 0.00", packed "  4530 0.00"
};

// The angle of a text, which is packed when `packed` is 1. A column that is missing, or does not begin with a
// number, counts as 0, and further columns are ignored. The sign is that of the degrees when they are below
// 0: "-0:30" is half a degree. A number that is too large is infinite. A null text and an unknown mode give
// 0.
ORX_API double zel_convert_str_to_ang(int mode, const char* text, int packed);

// Writes the text of the angle, into `out`, a buffer of
// ORX_ANGLE_TEXT_SIZE bytes, and returns `out`. `packed` is 0 for the form with colons and 1 for the packed
// one. Neither of them, zelNoAngle and an unknown mode give the empty text; a notation of one column ignores
// it.
//
// Whole seconds are cut, decimals rounded; no text shows 60 minutes or seconds. The sign is lost when the
// whole degrees are 0. Degrees too large for their column make it wider, up to ORX_ANGLE_TEXT_SIZE; an angle
// that is infinite or not a number has "inf" or "nan" in its first column, and 0 in the others.
ORX_API char* zel_convert_ang_to_str(int mode, double radians, int packed, char* out);

// Gives packed text the colons of its mode, as far as the text is long enough; the buffer holds two bytes
// more than the text. A null text is left alone.
ORX_API void insert_colon_to_ang_str(int mode, char* text);

ORX_C_END
