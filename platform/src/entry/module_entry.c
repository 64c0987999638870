// Calls the DllMain of the module it is linked into, like the system's loader. The build places it after all other
// objects of the module, so that static objects are constructed before.
#include <libloaderapi.h>
#include <minwindef.h>
#include <winnt.h>

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved);

char qxplatform_module_entry;

static HINSTANCE OwnModule(void)
{
    HMODULE module = NULL;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        (LPCWSTR)(const void*)&qxplatform_module_entry, &module);
    return module;
}

// Part of the C++ ABI: registers the destructors of static objects for a module.
int __cxa_atexit(void (*function)(void*), void* argument, void* module);
extern char __dso_handle __attribute__((visibility("hidden")));

// When a module is unloaded, the loader calls destructor functions first; at process end they run last, after all
// registered functions. That is too late for the detach, but it distinguishes the two cases.
static int isUnloaded;
static void __attribute__((destructor)) NoteUnload(void)
{
    isUnloaded = 1;
}

static void Detach(void* unused)
{
    (void)unused;
    // At process end the system passes a non-null pointer without further meaning.
    DllMain(OwnModule(), DLL_PROCESS_DETACH, isUnloaded ? NULL : &isUnloaded);
}

// Functions registered last run first in both cases, so the static objects still exist. Not atexit(), whose replacement
// by the thread sanitizer handles only process end.
static void __attribute__((constructor)) Attach(void)
{
    if (DllMain(OwnModule(), DLL_PROCESS_ATTACH, NULL))
        __cxa_atexit(Detach, NULL, &__dso_handle);
}
