// Threads of the C runtime.
#pragma once

#include <minwindef.h>

EXTERN_C_START

// Returns 0 and sets errno if the thread can't be created.
uintptr_t __cdecl _beginthreadex(void* security, unsigned stackSize, unsigned(__stdcall* startAddress)(void*),
    void* argument, unsigned flags, unsigned* threadId) QXP(_beginthreadex);

EXTERN_C_END
