// Splitting a text at delimiters.
//
// Every delimiter ends a token: two in a row have an empty token between them, and one at an end of the text
// has an empty token beyond it. A text has at most 25 tokens; what follows the 25th delimiter is lost.
#pragma once

#include <orx/compat/export.h>

ORX_C_BEGIN

// The tokens of the text, their number in `count`; each is a copy of its own, and the caller gives them back
// with orx_token_release. `delimiters` is a set of single characters; null is the empty set, and the one
// token is the whole text. For a null or empty text and for a null count the result is null and nothing is
// written; when memory runs out, it is null with a count of 0.
ORX_API char** orx_token_parser(const char* text, const char* delimiters, int* count);

// Frees those of the first `count` tokens that are not null, and the array, which may be null. Always 0.
ORX_API int orx_token_release(char** tokens, int count);

ORX_C_END
