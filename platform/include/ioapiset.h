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

// FSCTL_GET_REPARSE_POINT reads the target of a link, and FSCTL_SET_REPARSE_POINT turns an empty file that was opened
// relative to a folder into a link. The buffer is a REPARSE_DATA_BUFFER with the tag of the Windows Subsystem for
// Linux, IO_REPARSE_TAG_LX_SYMLINK. Other codes fail with ERROR_NOT_SUPPORTED.
BOOL WINAPI DeviceIoControl(HANDLE hDevice, DWORD dwIoControlCode, LPVOID lpInBuffer, DWORD nInBufferSize,
    LPVOID lpOutBuffer, DWORD nOutBufferSize, LPDWORD lpBytesReturned, LPOVERLAPPED lpOverlapped) QXP(DeviceIoControl);

EXTERN_C_END
