// VARIANT: a value with its type.
//
// Initialise a VARIANT with VariantInit, set `vt` and the union member of that type, and release the value
// with VariantClear. A variant owns the text of a VT_BSTR and nothing else. Different threads may use
// different variants.
#pragma once

#if defined(_WIN32)
#include <oleauto.h>
#else

#include <orx/compat/bstr.h>
#include <orx/compat/export.h>

#include <stdint.h>

typedef uint16_t VARTYPE;
typedef int16_t VARIANT_BOOL;
typedef double DATE;  // days since 1899-12-30; the fraction is the time of day

#define VARIANT_TRUE ((VARIANT_BOOL)-1)
#define VARIANT_FALSE ((VARIANT_BOOL)0)

enum VARENUM {
  VT_EMPTY = 0,
  VT_NULL = 1,
  VT_I2 = 2,
  VT_I4 = 3,
  VT_R4 = 4,
  VT_R8 = 5,
  VT_CY = 6,
  VT_DATE = 7,
  VT_BSTR = 8,
  VT_DISPATCH = 9,
  VT_ERROR = 10,
  VT_BOOL = 11,
  VT_VARIANT = 12,
  VT_UNKNOWN = 13,
  VT_I1 = 16,
  VT_UI1 = 17,
  VT_UI2 = 18,
  VT_UI4 = 19,
  VT_I8 = 20,
  VT_UI8 = 21,
  VT_INT = 22,
  VT_UINT = 23,
  VT_RECORD = 36,
  VT_ARRAY = 0x2000,
  VT_BYREF = 0x4000
};

typedef struct tagVARIANT {
  VARTYPE vt;
  uint16_t wReserved1;
  uint16_t wReserved2;
  uint16_t wReserved3;
  union {
    int8_t cVal;           // VT_I1
    uint8_t bVal;          // VT_UI1
    int16_t iVal;          // VT_I2
    uint16_t uiVal;        // VT_UI2
    int32_t lVal;          // VT_I4
    uint32_t ulVal;        // VT_UI4
    int64_t llVal;         // VT_I8; VT_CY in ten-thousandths
    uint64_t ullVal;       // VT_UI8
    int32_t intVal;        // VT_INT
    uint32_t uintVal;      // VT_UINT
    float fltVal;          // VT_R4
    double dblVal;         // VT_R8
    DATE date;             // VT_DATE
    VARIANT_BOOL boolVal;  // VT_BOOL
    BSTR bstrVal;          // VT_BSTR; the variant owns it
    void* byref;           // any type with VT_BYREF; the variant does not own it
  };
} VARIANT;

#if !defined(__cplusplus)
typedef int32_t HRESULT;
#else
#include <orx/compat/atl_exception.h>
#endif

ORX_C_BEGIN

// Makes an uninitialised variant empty, without releasing anything. Null is ignored.
ORX_API void VariantInit(VARIANT* value);

// Releases the variant's text and makes it empty. Returns E_INVALIDARG for null, otherwise S_OK.
ORX_API HRESULT VariantClear(VARIANT* value);

// Clears `target`, then makes it a copy of `source` with its own copy of the text. Copying a variant onto
// itself changes nothing. Returns S_OK, E_INVALIDARG for a null pointer, or E_OUTOFMEMORY when memory runs
// out; `target` is then empty.
ORX_API HRESULT VariantCopy(VARIANT* target, const VARIANT* source);

ORX_C_END

#endif
