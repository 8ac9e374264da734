// Operations on NUL-terminated narrow text in the caller's buffer, and two bounded copies.
//
// Functions that return text return their first argument. A null text is ignored. The functions may be called
// from any thread.
#pragma once

#include <orx/compat/export.h>

#include <stddef.h>

ORX_C_BEGIN

// Remove blanks, but no other white space: trim at both ends, trimt only at the end.
ORX_API char* trim(char* s);
ORX_API char* trimt(char* s);

// Converts every byte with the C library's toupper, so the result depends on the host's locale.
ORX_API void upperstr(char* s);

// Deletes the byte at index `pos`. An index outside the text changes nothing.
ORX_API char* delchar(char* s, int pos);

// Inserts `c` before index `pos`, or at the end if `pos` is the length. Any other index changes nothing,
// except that an empty text becomes `c` at every index. The buffer must have space for one more byte.
ORX_API char* inschar(char* s, char c, int pos);

// Store at most `n` bytes of text and always write a NUL at index `n`, so the buffer must have n + 1 bytes.
//
// ORX_snprintf formats as printf does, with a decimal point in every locale. It returns the length of the
// text, or -1 if the text was cut. For a null buffer or format and for n = 0 it returns -1 and writes
// nothing. ORX_strncpy fills the rest with NULs as strncpy does; a null `src` is the empty text.
ORX_API int ORX_snprintf(char* buf, size_t n, const char* format, ...) ORX_PRINTF(3, 4);
ORX_API char* ORX_strncpy(char* dst, const char* src, size_t n);

ORX_C_END

#if defined(__cplusplus)

#include <orx/compat/string_a.h>

// Returns whether the text is a decimal number. White space around it, a sign, a point and an exponent are
// allowed. Digits may be missing: blanks alone, a sign or point alone and a number with a bare exponent
// marker count as numbers. The empty text does not.
extern "C" ORX_API bool IsNumeric(const CStringA& text);

#endif
