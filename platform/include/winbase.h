// Global memory, FormatMessageW, pointer tests, and functions without a header of their own.
#pragma once

#include <stdarg.h>

#include <minwindef.h>

#define GMEM_FIXED 0x0000
#define GMEM_MOVEABLE 0x0002
#define GMEM_ZEROINIT 0x0040
#define GMEM_DDESHARE 0x2000
#define GHND (GMEM_MOVEABLE | GMEM_ZEROINIT)
#define GPTR (GMEM_FIXED | GMEM_ZEROINIT)
// Results of GlobalFlags.
#define GMEM_LOCKCOUNT 0x00ff
#define GMEM_INVALID_HANDLE 0x8000

#define LMEM_FIXED 0x0000
#define LMEM_MOVEABLE 0x0002
#define LMEM_ZEROINIT 0x0040
#define LPTR (LMEM_FIXED | LMEM_ZEROINIT)

#define INFINITE 0xFFFFFFFF
#define WAIT_OBJECT_0 0x00000000
#define WAIT_ABANDONED 0x00000080
#define WAIT_ABANDONED_0 0x00000080
#define WAIT_IO_COMPLETION 0x000000C0
#define WAIT_FAILED ((DWORD)0xFFFFFFFF)
#define MAXIMUM_WAIT_OBJECTS 64
#define STILL_ACTIVE 0x00000103

#define THREAD_PRIORITY_IDLE (-15)
#define THREAD_PRIORITY_LOWEST (-2)
#define THREAD_PRIORITY_BELOW_NORMAL (-1)
#define THREAD_PRIORITY_NORMAL 0
#define THREAD_PRIORITY_ABOVE_NORMAL 1
#define THREAD_PRIORITY_HIGHEST 2
#define THREAD_PRIORITY_TIME_CRITICAL 15
#define THREAD_PRIORITY_ERROR_RETURN 0x7FFFFFFF

#define CREATE_SUSPENDED 0x00000004
#define CREATE_UNICODE_ENVIRONMENT 0x00000400
#define STARTF_USESTDHANDLES 0x00000100

#define ACTCTX_FLAG_RESOURCE_NAME_VALID 0x00000008
#define ACTCTX_FLAG_HMODULE_VALID 0x00000080

EXTERN_C_START

typedef struct _FILE_BASIC_INFO
{
    LARGE_INTEGER CreationTime;
    LARGE_INTEGER LastAccessTime;
    LARGE_INTEGER LastWriteTime;
    LARGE_INTEGER ChangeTime;
    DWORD FileAttributes;
} FILE_BASIC_INFO, *PFILE_BASIC_INFO;

typedef struct _FILE_DISPOSITION_INFO
{
    BOOLEAN DeleteFile;
} FILE_DISPOSITION_INFO, *PFILE_DISPOSITION_INFO;

typedef struct tagACTCTXW
{
    ULONG cbSize;
    DWORD dwFlags;
    LPCWSTR lpSource;
    USHORT wProcessorArchitecture;
    LANGID wLangId;
    LPCWSTR lpAssemblyDirectory;
    LPCWSTR lpResourceName;
    LPCWSTR lpApplicationName;
    HMODULE hModule;
} ACTCTXW, *PACTCTXW;

// Creates a context from a manifest in a module's resources. Since no library exists in several versions, the context
// has no further effect.
HANDLE WINAPI CreateActCtxW(const ACTCTXW* pActCtx) QXP(CreateActCtxW);
void WINAPI ReleaseActCtx(HANDLE hActCtx) QXP(ReleaseActCtx);

// Convert only the format, not the time zone: a local time stays local, a UTC time stays UTC.
BOOL WINAPI FileTimeToDosDateTime(const FILETIME* lpFileTime, LPWORD lpFatDate, LPWORD lpFatTime)
    QXP(FileTimeToDosDateTime);
BOOL WINAPI DosDateTimeToFileTime(WORD wFatDate, WORD wFatTime, LPFILETIME lpFileTime) QXP(DosDateTimeToFileTime);

#define MOVEFILE_WRITE_THROUGH 0x00000008
#define REPLACEFILE_WRITE_THROUGH 0x00000001

// Never replaces a file. Only MOVEFILE_WRITE_THROUGH is supported; other flags fail with ERROR_NOT_SUPPORTED.
BOOL WINAPI MoveFileExW(LPCWSTR lpExistingFileName, LPCWSTR lpNewFileName, DWORD dwFlags) QXP(MoveFileExW);
// Replaces the file even if it is open, whatever its sharing mode: open handles still refer to the old file, which has
// no name any more. A backup, and flags other than REPLACEFILE_WRITE_THROUGH, fail with ERROR_NOT_SUPPORTED.
BOOL WINAPI ReplaceFileW(LPCWSTR lpReplacedFileName, LPCWSTR lpReplacementFileName, LPCWSTR lpBackupFileName,
    DWORD dwReplaceFlags, LPVOID lpExclude, LPVOID lpReserved) QXP(ReplaceFileW);
BOOL WINAPI CopyFileW(LPCWSTR lpExistingFileName, LPCWSTR lpNewFileName, BOOL bFailIfExists) QXP(CopyFileW);

DWORD WINAPI GetDllDirectoryW(DWORD nBufferLength, LPWSTR lpBuffer) QXP(GetDllDirectoryW);
BOOL WINAPI SetDllDirectoryW(LPCWSTR lpPathName) QXP(SetDllDirectoryW);
BOOL WINAPI GetUserNameW(LPWSTR lpBuffer, LPDWORD pcbBuffer) QXP(GetUserNameW);

BOOL WINAPI IsBadStringPtrW(LPCWSTR lpsz, UINT_PTR ucchMax) QXP(IsBadStringPtrW);

HGLOBAL WINAPI GlobalAlloc(UINT flags, SIZE_T size) QXP(GlobalAlloc);
HGLOBAL WINAPI GlobalReAlloc(HGLOBAL memory, SIZE_T size, UINT flags) QXP(GlobalReAlloc);
HGLOBAL WINAPI GlobalFree(HGLOBAL memory) QXP(GlobalFree);
LPVOID WINAPI GlobalLock(HGLOBAL memory) QXP(GlobalLock);
BOOL WINAPI GlobalUnlock(HGLOBAL memory) QXP(GlobalUnlock);
SIZE_T WINAPI GlobalSize(HGLOBAL memory) QXP(GlobalSize);
UINT WINAPI GlobalFlags(HGLOBAL memory) QXP(GlobalFlags);
HLOCAL WINAPI LocalAlloc(UINT flags, SIZE_T size) QXP(LocalAlloc);
HLOCAL WINAPI LocalFree(HLOCAL memory) QXP(LocalFree);
#define IS_TEXT_UNICODE_ASCII16 0x0001
#define IS_TEXT_UNICODE_STATISTICS 0x0002
#define IS_TEXT_UNICODE_CONTROLS 0x0004
#define IS_TEXT_UNICODE_SIGNATURE 0x0008
#define IS_TEXT_UNICODE_REVERSE_ASCII16 0x0010
#define IS_TEXT_UNICODE_REVERSE_STATISTICS 0x0020
#define IS_TEXT_UNICODE_REVERSE_CONTROLS 0x0040
#define IS_TEXT_UNICODE_REVERSE_SIGNATURE 0x0080
BOOL WINAPI IsTextUnicode(const VOID* lpv, int iSize, LPINT lpiResult) QXP(IsTextUnicode);

#define FORMAT_MESSAGE_ALLOCATE_BUFFER 0x00000100
#define FORMAT_MESSAGE_IGNORE_INSERTS 0x00000200
#define FORMAT_MESSAGE_FROM_STRING 0x00000400
#define FORMAT_MESSAGE_FROM_SYSTEM 0x00001000
DWORD WINAPI FormatMessageW(DWORD dwFlags, LPCVOID lpSource, DWORD dwMessageId, DWORD dwLanguageId, LPWSTR lpBuffer,
    DWORD nSize, va_list* Arguments) QXP(FormatMessageW);
#define FormatMessage FormatMessageW

#define ALL_PROCESSOR_GROUPS 0xffff
BOOL WINAPI GetProcessAffinityMask(HANDLE hProcess, PDWORD_PTR lpProcessAffinityMask, PDWORD_PTR lpSystemAffinityMask)
    QXP(GetProcessAffinityMask);
DWORD WINAPI GetActiveProcessorCount(WORD GroupNumber) QXP(GetActiveProcessorCount);

EXTERN_C_END
