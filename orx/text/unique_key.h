// Keys that are unique within a caller's sequence of calls.
//
// A key is the stamp of its second, that is the current local date and time as orxDateTime_FormatString
// writes them, without the separators, and a counter of six digits: 240305102030000042. The caller keeps the
// counter and the stamp of the last call; callers that share them take turns.
#pragma once

#include <orx/compat/export.h>

// The bytes of the longest key and of the caller's stamp, each with its NUL.
#define ORX_KEY_SIZE 26
#define ORX_KEY_STAMP_SIZE 32

// The counter of the last key within one second.
#define ORX_KEY_COUNTER_MAX 999999

ORX_C_BEGIN

// Writes at most outSize - 1 characters of the key, and a NUL; 18 characters with the initial static defaults
// of dates, 20 with years in full. `lastStamp` has ORX_KEY_STAMP_SIZE bytes; before the first call it is
// empty, and `counter` is 0. The counter goes on across seconds; once it has reached ORX_KEY_COUNTER_MAX, the
// call waits until the second is another than that of the last stamp, reading the clock all the while, and
// begins again with
// 1. A negative counter counts up like any other. With a null pointer or an outSize below 1 there is no key:
// the output is empty, if there is room for that, and nothing else changes.
ORX_API void GenerateKey(char* out, int outSize, char* lastStamp, int* counter);

ORX_C_END
