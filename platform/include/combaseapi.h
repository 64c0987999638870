// Task memory, streams on global memory.
#pragma once

#include <objidl.h>

EXTERN_C_START

LPVOID WINAPI CoTaskMemAlloc(SIZE_T size) QXP(CoTaskMemAlloc);
void WINAPI CoTaskMemFree(LPVOID memory) QXP(CoTaskMemFree);

HRESULT WINAPI CreateStreamOnHGlobal(HGLOBAL memory, BOOL deleteOnRelease, LPSTREAM* stream) QXP(CreateStreamOnHGlobal);
HRESULT WINAPI GetHGlobalFromStream(LPSTREAM stream, HGLOBAL* memory) QXP(GetHGlobalFromStream);

HRESULT WINAPI CoCreateFreeThreadedMarshaler(LPUNKNOWN outer, LPUNKNOWN* marshaler) QXP(CoCreateFreeThreadedMarshaler);

EXTERN_C_END
