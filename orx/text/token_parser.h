// Splitting a text at delimiters.
//
// Every delimiter ends a token. Two adjacent delimiters have an empty token between them; a delimiter at the
// beginning or the end of the text has an empty token before or after it. A text has at most 25 tokens; the
// text after the 25th delimiter is lost. The functions may be called from any thread and leave errno
// unchanged.
#pragma once

#include <orx/compat/export.h>

ORX_C_BEGIN

// Returns an array of the tokens, and their number in `*count`. The caller owns the array and the tokens, and
// releases them with orx_token_release. `delimiters` is a set of single bytes. A null or empty set gives the
// whole text as one token.
//
// For a null or empty text and for a null `count` the result is null, and `*count` is unchanged. When memory
// runs out, the result is null, and `*count` is 0.
ORX_API char** orx_token_parser(const char* text, const char* delimiters, int* count);

// Frees the first `count` tokens and the array. The array and its tokens may be null. Always returns 0.
ORX_API int orx_token_release(char** tokens, int count);

ORX_C_END
