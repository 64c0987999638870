// COM initialisation of threads, task memory, streams on global memory.
#pragma once

#include <objidl.h>

EXTERN_C_START

QXPLATFORM_API HRESULT WINAPI CoInitializeEx(LPVOID reserved, DWORD model);
QXPLATFORM_API void WINAPI CoUninitialize(void);

QXPLATFORM_API LPVOID WINAPI CoTaskMemAlloc(SIZE_T size);
QXPLATFORM_API void WINAPI CoTaskMemFree(LPVOID memory);

QXPLATFORM_API HRESULT WINAPI CreateStreamOnHGlobal(HGLOBAL memory, BOOL deleteOnRelease, LPSTREAM* stream);
QXPLATFORM_API HRESULT WINAPI GetHGlobalFromStream(LPSTREAM stream, HGLOBAL* memory);

QXPLATFORM_API HRESULT WINAPI CoCreateFreeThreadedMarshaler(LPUNKNOWN outer, LPUNKNOWN* marshaler);

EXTERN_C_END
