// Completion ports.
#pragma once

#include <minwinbase.h>
#include <minwindef.h>

EXTERN_C_START

HANDLE WINAPI CreateIoCompletionPort(HANDLE FileHandle, HANDLE ExistingCompletionPort, ULONG_PTR CompletionKey,
    DWORD NumberOfConcurrentThreads) QXP(CreateIoCompletionPort);
BOOL WINAPI GetQueuedCompletionStatus(HANDLE CompletionPort, LPDWORD lpNumberOfBytesTransferred,
    PULONG_PTR lpCompletionKey, LPOVERLAPPED* lpOverlapped, DWORD dwMilliseconds) QXP(GetQueuedCompletionStatus);
BOOL WINAPI PostQueuedCompletionStatus(HANDLE CompletionPort, DWORD dwNumberOfBytesTransferred,
    ULONG_PTR dwCompletionKey, LPOVERLAPPED lpOverlapped) QXP(PostQueuedCompletionStatus);

EXTERN_C_END
