/* BSTR: the system's length-prefixed string. Functions that return one say so; the caller frees it with SysFreeString.
 *
 * These functions belong to the system: oleaut32 on windows, and the platform library that ships with this library
 * elsewhere. They are declared here for callers that don't include the system's headers. Documented at
 * https://learn.microsoft.com/windows/win32/api/oleauto/.
 */
#ifndef QXUT23_BSTR_H
#define QXUT23_BSTR_H

#include <qxut23/base.h>

QXUT_EXTERN_C_BEGIN

/* Allocates a BSTR of `length` characters plus a terminator and copies `length` characters from `text` into it. If
   `text` is null, the characters are left uninitialised. Returns null if memory runs out. */
QXUT_SYSTEM_API(QXWCHAR*) SysAllocStringLen(const QXWCHAR* text, unsigned int length) QXUT_SYSTEM(SysAllocStringLen);

/* Returns the length of a BSTR in characters, without the terminator. Returns 0 for null. */
QXUT_SYSTEM_API(unsigned int) SysStringLen(QXWCHAR* text) QXUT_SYSTEM(SysStringLen);

/* Frees a BSTR. Null is ignored. */
QXUT_SYSTEM_API(void) SysFreeString(QXWCHAR* text) QXUT_SYSTEM(SysFreeString);

QXUT_EXTERN_C_END

#endif
