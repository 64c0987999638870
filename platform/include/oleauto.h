// Texts of automation.
#pragma once

#include <oaidl.h>

EXTERN_C_START

QXPLATFORM_API BSTR WINAPI SysAllocString(const OLECHAR* text);
QXPLATFORM_API BSTR WINAPI SysAllocStringLen(const OLECHAR* text, UINT length);
QXPLATFORM_API BSTR WINAPI SysAllocStringByteLen(LPCSTR bytes, UINT length);
QXPLATFORM_API INT WINAPI SysReAllocString(BSTR* bstr, const OLECHAR* text);
QXPLATFORM_API INT WINAPI SysReAllocStringLen(BSTR* bstr, const OLECHAR* text, UINT length);
QXPLATFORM_API void WINAPI SysFreeString(BSTR bstr);
QXPLATFORM_API UINT WINAPI SysStringLen(BSTR bstr);
QXPLATFORM_API UINT WINAPI SysStringByteLen(BSTR bstr);

EXTERN_C_END
