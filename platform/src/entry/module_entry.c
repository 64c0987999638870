// Calls the DllMain of the module that this is linked into, as the system's loader would. The build puts it behind all
// other objects of the module, so that the static ones are made before.
#include <libloaderapi.h>
#include <minwindef.h>
#include <winnt.h>

#include <stdlib.h>

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved);

char qxplatform_module_entry;

static HINSTANCE OwnModule(void)
{
    HMODULE module = NULL;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        (LPCWSTR)(const void*)&qxplatform_module_entry, &module);
    return module;
}

static void Detach(void)
{
    DllMain(OwnModule(), DLL_PROCESS_DETACH, NULL);
}

// Not a destructor function: those run only after the static objects are gone. What is registered last comes first,
// both at the end of the process and when the module is unloaded.
static void __attribute__((constructor)) Attach(void)
{
    if (DllMain(OwnModule(), DLL_PROCESS_ATTACH, NULL))
        atexit(Detach);
}
