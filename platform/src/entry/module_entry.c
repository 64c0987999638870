// Calls the DllMain of the module that this is linked into, as the system's loader would. The build puts it behind all
// other objects of the module, so that the static ones are made before.
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

// Of the C++ ABI: what static objects register their destructors with, by the module that they belong to.
int __cxa_atexit(void (*function)(void*), void* argument, void* module);
extern char __dso_handle __attribute__((visibility("hidden")));

// The loader calls destructor functions first when it unloads a module; at the end of the process they come last, when
// all that was registered is done. So this one is too late for the detach there, but tells the two ends apart.
static int isUnloaded;
static void __attribute__((destructor)) NoteUnload(void)
{
    isUnloaded = 1;
}

static void Detach(void* unused)
{
    (void)unused;
    // Where the process ends the system passes an address that means nothing else.
    DllMain(OwnModule(), DLL_PROCESS_DETACH, isUnloaded ? NULL : &isUnloaded);
}

// What is registered last comes first, at both ends, so that the static objects are still there. Not atexit(), which
// the thread sanitizer replaces by one that knows the process's end alone.
static void __attribute__((constructor)) Attach(void)
{
    if (DllMain(OwnModule(), DLL_PROCESS_ATTACH, NULL))
        __cxa_atexit(Detach, NULL, &__dso_handle);
}
