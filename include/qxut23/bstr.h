/* BSTR: the system's text whose length stands ahead of it. Functions that hand one out say so; the caller releases it.
 *
 * The functions are the system's own (on windows of oleaut32, elsewhere of the platform library that comes with this
 * one), declared here for callers that include no header of the system. Published at
 * https://learn.microsoft.com/windows/win32/api/oleauto/.
 */
#ifndef QXUT23_BSTR_H
#define QXUT23_BSTR_H

#include <qxut23/base.h>

QXUT_EXTERN_C_BEGIN

/* A new BSTR of `length` characters and a terminator; null without memory. A null `text` leaves them unset. */
QXUT_SYSTEM_API(QXWCHAR*) SysAllocStringLen(const QXWCHAR* text, unsigned int length) QXUT_SYSTEM(SysAllocStringLen);

/* The characters of a BSTR, terminator not included; 0 for null. */
QXUT_SYSTEM_API(unsigned int) SysStringLen(QXWCHAR* text) QXUT_SYSTEM(SysStringLen);

/* Releases a BSTR; null is fine. */
QXUT_SYSTEM_API(void) SysFreeString(QXWCHAR* text) QXUT_SYSTEM(SysFreeString);

QXUT_EXTERN_C_END

#endif
