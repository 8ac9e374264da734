// The macros of the public headers.
//
//   ORX_API                what hosts may call: everything else in the library is hidden
//   ORX_C_BEGIN/ORX_C_END  around declarations that C callers share
//   ORX_NORETURN           before ORX_API: the function does not return
//   ORX_PRINTF(f, a)       the compiler checks the arguments from position a on against the format at
//   position f
//                          (positions count from 1, and from 2 in a member function)
#pragma once

#if defined(_WIN32)
#if defined(ORX_BUILDING)
#define ORX_API __declspec(dllexport)
#else
#define ORX_API __declspec(dllimport)
#endif
#else
#define ORX_API __attribute__((visibility("default")))
#endif

#if defined(__cplusplus)
#define ORX_C_BEGIN extern "C" {
#define ORX_C_END }
#define ORX_NORETURN [[noreturn]]
#else
#define ORX_C_BEGIN
#define ORX_C_END
#define ORX_NORETURN _Noreturn
#endif

#if defined(__GNUC__)
#define ORX_PRINTF(format_position, first_argument) \
  __attribute__((format(printf, format_position, first_argument)))
#else
#define ORX_PRINTF(format_position, first_argument)
#endif
