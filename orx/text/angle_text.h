// Angles as text, in six notations.
//
// Angles are in radians. A text has one to three columns of fixed width, padded with blanks and separated by
// colons. The packed form of a text has no colons; it can be read again if the whole degrees and their sign
// fit in four characters. Numbers have a decimal point in every locale. The functions may be called from any
// thread and leave errno unchanged.
#pragma once

#include <orx/compat/export.h>

ORX_C_BEGIN

// The size of a buffer for the text of any angle, in bytes including the NUL.
#define ORX_ANGLE_TEXT_SIZE 50

// The notations, each with the text of 45.5 degrees.
enum {
  zelDegrees = 10,                      // " 45.50000000"
  zelDegreesMinutesSeconds = 11,        // "  45:30: 0", packed "  4530 0"
  zelDegreesDecimalMinutes = 12,        // "  45:30.00000", packed "  4530.00000"
  zelRadians = 13,                      // "  0.79412481"
  zelGrads = 14,                        // " 50.55555556"
  zelNoAngle = 15,                      // the text is empty, every text is 0
  zelDegreesMinutesDecimalSeconds = 16  // "  45:30: 0.00", packed "  4530 0.00"
};

// Returns the angle of `text` in radians, or 0 for a null text and an unknown mode. `packed` is 1 for packed
// text and any other number for text with colons.
//
// A column that is missing or does not begin with a number counts as 0. Further columns are ignored. The
// angle is negative when the degrees are below 0: "-0:30" is half a degree. A number that is too large is
// infinite.
ORX_API double zel_convert_str_to_ang(int mode, const char* text, int packed);

// Writes the text of the angle into `out`, a buffer of ORX_ANGLE_TEXT_SIZE bytes, and returns `out`. A null
// `out` is returned at once. `packed` is 0 for text with colons and 1 for packed text; any other number gives
// the empty text. Notations of one column ignore `packed`. zelNoAngle and an unknown mode give the empty
// text.
//
// Whole seconds are truncated, decimals are rounded. No text shows 60 minutes or 60 seconds. The sign is lost
// when the whole degrees are 0. Degrees that are too large for their column widen it, and the text is cut to
// the buffer. An angle that is infinite or not a number gives "inf" or "nan" in the first column, and 0 in
// the others.
ORX_API char* zel_convert_ang_to_str(int mode, double radians, int packed, char* out);

// Inserts the colons of the mode into packed text, as far as the text is long enough. The buffer must have
// two bytes more than the text with its NUL. A null text is ignored.
ORX_API void insert_colon_to_ang_str(int mode, char* text);

ORX_C_END
