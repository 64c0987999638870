/* Types shared by all public headers of the library. Valid C11 and C++17; includes only two standard C headers. */
#ifndef QXUT23_BASE_H
#define QXUT23_BASE_H

#include <stddef.h>
#include <stdint.h>

/* clang-format off */
#ifdef __cplusplus
#define QXUT_EXTERN_C_BEGIN extern "C" {
#define QXUT_EXTERN_C_END }
#else
#define QXUT_EXTERN_C_BEGIN
#define QXUT_EXTERN_C_END
#endif
/* clang-format on */

#if defined(_WIN32)
#define QXUT_API
#else
#define QXUT_API __attribute__((visibility("default")))
#endif

/* Declares a function of the system: QXUT_SYSTEM_API(type) name(arguments) QXUT_SYSTEM(name). On windows the system
   provides it. Elsewhere the platform library provides it under the link name qxp_NAME, because other libraries in the
   process may export the plain name. */
#if defined(_WIN32)
#define QXUT_SYSTEM_API(type) __declspec(dllimport) type __stdcall
#define QXUT_SYSTEM(name)
#else
#define QXUT_SYSTEM_API(type) QXUT_API type
#define QXUT_SYSTEM(name) __asm__("qxp_" #name)
#endif

QXUT_EXTERN_C_BEGIN

/* A character of wide text: one UTF-16 code unit, 16 bits on every system. Callers whose wchar_t has 16 bits pass
   L"..." literals. On other systems, C++ callers pass u"..." literals and C callers pass arrays of uint16_t. */
#if defined(_WIN32) || (defined(__SIZEOF_WCHAR_T__) && __SIZEOF_WCHAR_T__ == 2)
typedef wchar_t QXWCHAR; /* C gets it from <stddef.h> */
#elif defined(__cplusplus)
typedef char16_t QXWCHAR;
#else
typedef uint16_t QXWCHAR;
#endif

/* The result and count types of COM interfaces (HRESULT and ULONG of the system, 32 bits each) and the calling
   convention of COM functions. */
#if defined(_WIN32)
typedef long QXHRESULT;
typedef unsigned long QXULONG;
#define QXUT_COMCALL __stdcall
#else
typedef int32_t QXHRESULT;
typedef uint32_t QXULONG;
#define QXUT_COMCALL
#endif

QXUT_EXTERN_C_END

#endif
