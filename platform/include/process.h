// Threads of the C runtime. On this side they differ from those of CreateThread in nothing but errno.
#pragma once

#include <minwindef.h>

EXTERN_C_START

// 0 with errno if there can't be a thread.
QXPLATFORM_API uintptr_t __cdecl _beginthreadex(void* security, unsigned stackSize,
    unsigned(__stdcall* startAddress)(void*), void* argument, unsigned flags, unsigned* threadId);
QXPLATFORM_API void __cdecl _endthreadex(unsigned returnValue) __attribute__((noreturn));

EXTERN_C_END
