// Completion ports.
#pragma once

#include <minwinbase.h>
#include <minwindef.h>

EXTERN_C_START

QXPLATFORM_API HANDLE WINAPI CreateIoCompletionPort(
    HANDLE FileHandle, HANDLE ExistingCompletionPort, ULONG_PTR CompletionKey, DWORD NumberOfConcurrentThreads);
QXPLATFORM_API BOOL WINAPI GetQueuedCompletionStatus(HANDLE CompletionPort, LPDWORD lpNumberOfBytesTransferred,
    PULONG_PTR lpCompletionKey, LPOVERLAPPED* lpOverlapped, DWORD dwMilliseconds);
QXPLATFORM_API BOOL WINAPI PostQueuedCompletionStatus(
    HANDLE CompletionPort, DWORD dwNumberOfBytesTransferred, ULONG_PTR dwCompletionKey, LPOVERLAPPED lpOverlapped);

EXTERN_C_END
