// A library that records the order in which its initialisation and cleanup run.
#include "exported.h"

#include <windows.h>

#include <cstdio>
#include <cstring>

namespace
{

char own[16];
char* steps = own;

void Note(char step)
{
    const char text[] = {step, 0};
    std::strcat(steps, text);
}

struct Static
{
    Static() { Note('c'); }
    ~Static() { Note('d'); }
} theStatic;

} // namespace

// Copies the steps recorded so far to the caller's buffer, which also receives all further steps.
extern "C" EXPORTED void QxTakeSteps(char* buffer)
{
    std::strcpy(buffer, steps);
    steps = buffer;
}

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved)
{
    HMODULE containing = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        reinterpret_cast<LPCWSTR>(&theStatic), &containing);
    if (reason == DLL_PROCESS_ATTACH)
        Note(module == containing ? 'A' : '?');
    else if (reason == DLL_PROCESS_DETACH)
        Note(module == containing ? 'D' : '?');
    if (reason == DLL_PROCESS_DETACH && reserved != nullptr)
        std::fprintf(stderr, "%s, and the process ends", steps);
    return TRUE;
}
