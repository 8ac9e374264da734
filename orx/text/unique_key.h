// Keys that are unique within a caller's sequence of calls.
//
// A key consists of a time stamp and a counter of six digits: 240305102030000042. The stamp is the current
// local date and time as orxDateTime_FormatString writes them, without separators. The caller keeps the
// counter and the stamp of the previous call. Threads that share them must take turns.
#pragma once

#include <orx/compat/export.h>

// The sizes of buffers for a key and for the caller's stamp, in bytes including the NUL.
#define ORX_KEY_SIZE 26
#define ORX_KEY_STAMP_SIZE 32

// The counter of the last key that a second can have.
#define ORX_KEY_COUNTER_MAX 999999

ORX_C_BEGIN

// Writes the next key into `out`, cut to outSize - 1 characters, and a NUL. A key has 18 characters with the
// initial static defaults of dates, and 20 with years in full.
//
// `lastStamp` is a buffer of ORX_KEY_STAMP_SIZE bytes. Before the first call it holds the empty text, and
// `*counter` is 0. Each call stores its stamp and increments the counter, which continues across seconds.
// After ORX_KEY_COUNTER_MAX the counter restarts with 1 in a new second: if the last stamp is of the current
// second, the call reads the clock until the second ends. A negative counter is incremented like any other.
//
// With a null pointer or an outSize below 1 there is no key, and stamp and counter stay unchanged. `out` is
// then the empty text if it is not null and outSize is at least 1.
ORX_API void GenerateKey(char* out, int outSize, char* lastStamp, int* counter);

ORX_C_END
