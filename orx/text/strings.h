// Small operations on NUL-terminated narrow text, in place, and two bounded copies.
//
// The in-place functions work on the caller's buffer and do not know its size: inschar needs one byte more
// than the text has. A null text is left alone. Where a function returns text, it is its argument.
#pragma once

#include <orx/compat/export.h>

#include <stddef.h>

ORX_C_BEGIN

// Removes blanks (0x20, and no other white space) at both ends; trimt at the end only.
ORX_API char* trim(char* s);
ORX_API char* trimt(char* s);

// Every byte through the C runtime's toupper, that is by the locale that the host has set.
ORX_API void upperstr(char* s);

// Deletes the character at index `pos`; a position outside the text changes nothing.
ORX_API char* delchar(char* s, int pos);

// Inserts `c` before index `pos`, at most the length; a position outside changes nothing, but an empty text
// becomes `c` at any position.
ORX_API char* inschar(char* s, char c, int pos);

// Both store at most `n` characters and always put a NUL at index n, so the buffer holds n + 1 bytes.
//
// ORX_snprintf returns the length of the text, or -1 when it was cut, and -1, writing nothing, for a null
// buffer or format and for n = 0. Numbers have a decimal point in every locale. ORX_strncpy fills up with
// NULs as strncpy does; a null source is the empty text.
ORX_API int ORX_snprintf(char* buf, size_t n, const char* format, ...) ORX_PRINTF(3, 4);
ORX_API char* ORX_strncpy(char* dst, const char* src, size_t n);

ORX_C_END

#if defined(__cplusplus)

#include <orx/compat/string_a.h>

// Whether the text is a decimal number: white space around it, a sign, a point and an exponent are allowed.
// Lenient where digits are missing: blanks alone, a sign or point alone and a number with a bare exponent
// marker are numbers, the empty text is not.
extern "C" ORX_API bool IsNumeric(const CStringA& text);

#endif
