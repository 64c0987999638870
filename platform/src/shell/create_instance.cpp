// CoCreateInstance: creates objects by their class identifier.
#include "com/apartment.h"
#include "shell/shell_link.h"

#include <combaseapi.h>
#include <shobjidl.h>

#include <new>

HRESULT WINAPI CoCreateInstance(REFCLSID clsid, LPUNKNOWN outer, DWORD context, REFIID riid, LPVOID* object)
try
{
    if (object == nullptr)
        return E_POINTER;
    *object = nullptr;
    if (!qxplatform::HasEnteredCom())
        return CO_E_NOTINITIALIZED;
    if (clsid != CLSID_ShellLink || (context & CLSCTX_INPROC_SERVER) == 0)
        return REGDB_E_CLASSNOTREG;
    if (outer != nullptr)
        return CLASS_E_NOAGGREGATION;
    IUnknown* const link = qxplatform::MakeShellLink();
    const HRESULT result = link->QueryInterface(riid, object);
    link->Release();
    return result;
}
catch (const std::bad_alloc&)
{
    return E_OUTOFMEMORY;
}
