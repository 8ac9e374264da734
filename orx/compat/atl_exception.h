// CAtlException: the exception of the string and array classes. E_INVALIDARG is an index out of range or an
// invalid argument, E_OUTOFMEMORY is out of memory.
#pragma once

#if defined(_WIN32)
#include <winerror.h>
#endif
#if defined(_MSC_VER)
#include <atlexcept.h>
#else

#include <orx/compat/export.h>

#include <cstdint>

#if !defined(_WIN32)
using HRESULT = std::int32_t;  // failures are negative

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005U);
inline constexpr HRESULT E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000EU);
inline constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057U);
inline constexpr HRESULT DISP_E_TYPEMISMATCH = static_cast<HRESULT>(0x80020005U);
inline constexpr HRESULT DISP_E_BADVARTYPE = static_cast<HRESULT>(0x80020008U);
#endif

// As on Windows, the class is not derived from std::exception, so a handler must name it.
class ORX_API CAtlException {
 public:
  CAtlException() noexcept = default;
  explicit CAtlException(HRESULT result) noexcept : m_hr(result) {}
  operator HRESULT() const noexcept { return m_hr; }

  HRESULT m_hr = E_FAIL;
};

[[noreturn]] inline void AtlThrow(HRESULT result) { throw CAtlException(result); }

#endif
