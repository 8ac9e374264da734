// BSTR: a counted wide string that is owned by whoever holds it.
//
// The characters are followed by a terminating NUL and preceded by their length in bytes, so a BSTR may hold
// NULs. A null BSTR stands for the empty text. Every BSTR is released with SysFreeString, and by nothing
// else.
#pragma once

#if defined(_WIN32)
#include <oleauto.h>
#else

#include <orx/compat/export.h>

#include <wchar.h>

typedef wchar_t OLECHAR;  // one code point each
typedef OLECHAR* BSTR;
typedef unsigned int UINT;

ORX_C_BEGIN

// A copy of the text up to its NUL; null for a null text or exhausted memory.
ORX_API BSTR SysAllocString(const OLECHAR* text);

// A string of `length` characters, copied from `text` (NULs included), or uninitialised when `text` is null;
// null when memory is exhausted.
ORX_API BSTR SysAllocStringLen(const OLECHAR* text, UINT length);

// The length in characters, without the terminating NUL; 0 for null.
ORX_API UINT SysStringLen(BSTR text);

// The length in bytes, without the terminating NUL; 0 for null.
ORX_API UINT SysStringByteLen(BSTR text);

// Null is allowed.
ORX_API void SysFreeString(BSTR text);

ORX_C_END

#endif
