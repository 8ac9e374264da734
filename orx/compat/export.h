// The macros of the public headers.
//
//   ORX_API                  exports a function or class; the library hides all other symbols
//   ORX_C_BEGIN, ORX_C_END   enclose the declarations that C programs can use
//   ORX_NORETURN             marks a function that does not return; precedes ORX_API
//   ORX_PRINTF(f, a)         lets the compiler check the arguments from position a on against the printf
//                            format at position f; positions count from 1, and from 2 in member functions
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
