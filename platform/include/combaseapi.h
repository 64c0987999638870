// COM functions: initialisation of threads, creation of objects, task memory, streams on global memory.
#pragma once

#include <objidl.h>

#define CO_E_NOTINITIALIZED ((HRESULT)0x800401F0)
#define REGDB_E_CLASSNOTREG ((HRESULT)0x80040154)
#define CLASS_E_NOAGGREGATION ((HRESULT)0x80040110)
#define RPC_E_CHANGED_MODE ((HRESULT)0x80010106)

// Apartment models.
#define COINIT_MULTITHREADED 0x0
#define COINIT_APARTMENTTHREADED 0x2

// Where an object's code runs: always in the calling process.
#define CLSCTX_INPROC_SERVER 0x1

EXTERN_C_START

// Enters COM on the calling thread. Returns S_FALSE if the thread has already entered it, and RPC_E_CHANGED_MODE if
// that was with the other model. Each success must be matched by a call to CoUninitialize.
HRESULT WINAPI CoInitializeEx(LPVOID reserved, DWORD model) QXP(CoInitializeEx);
void WINAPI CoUninitialize(void) QXP(CoUninitialize);

// Creates an object of a class of the layer: CLSID_ShellLink. `outer` must be null. The thread must have entered COM.
#ifdef __cplusplus
HRESULT WINAPI CoCreateInstance(REFCLSID clsid, LPUNKNOWN outer, DWORD context, REFIID riid, LPVOID* object)
    QXP(CoCreateInstance);
#endif

LPVOID WINAPI CoTaskMemAlloc(SIZE_T size) QXP(CoTaskMemAlloc);
void WINAPI CoTaskMemFree(LPVOID memory) QXP(CoTaskMemFree);

HRESULT WINAPI CreateStreamOnHGlobal(HGLOBAL memory, BOOL deleteOnRelease, LPSTREAM* stream) QXP(CreateStreamOnHGlobal);
HRESULT WINAPI GetHGlobalFromStream(LPSTREAM stream, HGLOBAL* memory) QXP(GetHGlobalFromStream);

HRESULT WINAPI CoCreateFreeThreadedMarshaler(LPUNKNOWN outer, LPUNKNOWN* marshaler) QXP(CoCreateFreeThreadedMarshaler);

EXTERN_C_END
