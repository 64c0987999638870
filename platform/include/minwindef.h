// The basic types of the system's API, with their widths on 64-bit Windows.
#ifndef QXPLATFORM_MINWINDEF_H
#define QXPLATFORM_MINWINDEF_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
#define EXTERN_C extern "C"
#define EXTERN_C_START                                                                                                 \
    extern "C"                                                                                                         \
    {
#define EXTERN_C_END }
#else
#define EXTERN_C extern
#define EXTERN_C_START
#define EXTERN_C_END
#endif

// Ends the declaration of each function and constant that the layer exports, and gives it a link name of its own: a
// process may load other libraries that export the plain names. A declaration without it is not exported, so the first
// caller outside the layer fails to link.
#define QXP(name) __asm__("qxp_" #name) __attribute__((visibility("default")))

#define WINAPI
#define CALLBACK
#define NTAPI
#define STDMETHODCALLTYPE
#define __stdcall
#define __cdecl

#define VOID void
#define IN
#define FALSE 0
#define TRUE 1
#define MAX_PATH 260

typedef int BOOL;
typedef unsigned char BYTE, UCHAR, BOOLEAN;
typedef char CHAR;
typedef int8_t INT8;
typedef short SHORT;
typedef unsigned short WORD, USHORT, *PUSHORT;
typedef int INT, INT32, LONG;
typedef unsigned int UINT, UINT32, DWORD, ULONG;
// As in the documented headers, 64-bit numbers are `long long`, which matches the formatter's %I64d.
typedef long long INT64, LONG64, LONGLONG, INT_PTR, LONG_PTR, SSIZE_T;
typedef unsigned long long UINT64, ULONG64, ULONGLONG, DWORD64, DWORDLONG, UINT_PTR, ULONG_PTR, DWORD_PTR;
typedef size_t SIZE_T;
typedef float FLOAT;
typedef double DOUBLE;

// A UTF-16 code unit. With -fshort-wchar it is wchar_t; programs that are compiled without it pass u"..." texts. TEXT
// makes a literal of that type.
#if __SIZEOF_WCHAR_T__ == 2
typedef wchar_t WCHAR;
#define TEXT(quote) L##quote
#else
#ifdef __cplusplus
typedef char16_t WCHAR;
#else
typedef uint16_t WCHAR;
#endif
#define TEXT(quote) u##quote
#endif

typedef void *PVOID, *LPVOID;
typedef const void* LPCVOID;
typedef BYTE *PBYTE, *LPBYTE;
typedef BOOL *PBOOL, *LPBOOL;
typedef WORD *PWORD, *LPWORD;
typedef INT *PINT, *LPINT;
typedef UINT* PUINT;
typedef LONG *PLONG, *LPLONG;
typedef DWORD *PDWORD, *LPDWORD;
typedef ULONG_PTR *PULONG_PTR, *PDWORD_PTR;
typedef ULONG* PULONG;
typedef SIZE_T* PSIZE_T;
typedef CHAR *PSTR, *LPSTR;
typedef const CHAR *PCSTR, *LPCSTR;
typedef WCHAR *PWSTR, *LPWSTR, *PWCHAR;
typedef const WCHAR *PCWSTR, *LPCWSTR;

typedef LONG HRESULT;
typedef LONG LSTATUS;
typedef DWORD LCID;
typedef WORD LANGID;
typedef DWORD LCTYPE;
typedef WORD ATOM;
typedef UINT_PTR WPARAM;
typedef LONG_PTR LPARAM;
typedef LONG_PTR LRESULT;

typedef void *HANDLE, **PHANDLE;
#define DECLARE_HANDLE(name)                                                                                           \
    struct name##__                                                                                                    \
    {                                                                                                                  \
        int unused;                                                                                                    \
    };                                                                                                                 \
    typedef struct name##__* name
DECLARE_HANDLE(HINSTANCE);
typedef HINSTANCE HMODULE;
DECLARE_HANDLE(HRSRC);
DECLARE_HANDLE(HKEY);
typedef HKEY* PHKEY;
DECLARE_HANDLE(HWND);
DECLARE_HANDLE(HWINSTA);
typedef HANDLE HGLOBAL;
typedef HANDLE HLOCAL;
typedef long long (*FARPROC)(void);

#define INVALID_HANDLE_VALUE ((HANDLE)(LONG_PTR)-1)

typedef union _LARGE_INTEGER
{
    struct
    {
        DWORD LowPart;
        LONG HighPart;
    };
    struct
    {
        DWORD LowPart;
        LONG HighPart;
    } u;
    LONGLONG QuadPart;
} LARGE_INTEGER, *PLARGE_INTEGER;

typedef union _ULARGE_INTEGER
{
    struct
    {
        DWORD LowPart;
        DWORD HighPart;
    };
    struct
    {
        DWORD LowPart;
        DWORD HighPart;
    } u;
    ULONGLONG QuadPart;
} ULARGE_INTEGER, *PULARGE_INTEGER;

typedef struct _FILETIME
{
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
} FILETIME, *PFILETIME, *LPFILETIME;

typedef struct _SYSTEMTIME
{
    WORD wYear;
    WORD wMonth;
    WORD wDayOfWeek;
    WORD wDay;
    WORD wHour;
    WORD wMinute;
    WORD wSecond;
    WORD wMilliseconds;
} SYSTEMTIME, *PSYSTEMTIME, *LPSYSTEMTIME;

typedef struct _SECURITY_ATTRIBUTES
{
    DWORD nLength;
    LPVOID lpSecurityDescriptor;
    BOOL bInheritHandle;
} SECURITY_ATTRIBUTES, *PSECURITY_ATTRIBUTES, *LPSECURITY_ATTRIBUTES;

typedef struct _GUID
{
    DWORD Data1;
    WORD Data2;
    WORD Data3;
    BYTE Data4[8];
} GUID, IID, CLSID;

#ifdef __cplusplus
static_assert(sizeof(WCHAR) == 2);
static_assert(sizeof(BOOL) == 4 && sizeof(LONG) == 4 && sizeof(DWORD) == 4 && sizeof(HRESULT) == 4);
static_assert(sizeof(WORD) == 2 && sizeof(INT_PTR) == 8 && sizeof(SIZE_T) == 8 && sizeof(HANDLE) == 8);
static_assert(sizeof(LARGE_INTEGER) == 8 && sizeof(FILETIME) == 8 && sizeof(SYSTEMTIME) == 16 && sizeof(GUID) == 16);
#endif

#endif
