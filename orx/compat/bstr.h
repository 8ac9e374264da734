// BSTR: a wide string with a length.
//
// A BSTR points to its characters. A terminating NUL follows them, and their length in bytes precedes them,
// so a BSTR may contain NULs. A null BSTR is the empty text. Whoever holds a BSTR owns it and releases it
// with SysFreeString; no other function can release it. Different threads may use different strings.
#pragma once

#if defined(_WIN32)
#include <oleauto.h>
#else

#include <orx/compat/export.h>

#include <wchar.h>

typedef wchar_t OLECHAR;  // one code point
typedef OLECHAR* BSTR;
typedef unsigned int UINT;

ORX_C_BEGIN

// Returns a copy of the text up to its NUL, or null when `text` is null or memory runs out.
ORX_API BSTR SysAllocString(const OLECHAR* text);

// Returns a string of `length` characters, or null when memory runs out or the length in bytes needs more
// than 32 bits. Copies the characters from `text`, NULs included. If `text` is null, the characters are
// uninitialised.
ORX_API BSTR SysAllocStringLen(const OLECHAR* text, UINT length);

// The length in characters, without the terminating NUL; 0 for null.
ORX_API UINT SysStringLen(BSTR text);

// The length in bytes, without the terminating NUL; 0 for null.
ORX_API UINT SysStringByteLen(BSTR text);

// Releases the string. Null is allowed.
ORX_API void SysFreeString(BSTR text);

ORX_C_END

#endif
