// Event tracing for programs that write events.
#pragma once

#include <guiddef.h>
#include <winnt.h>

EXTERN_C_START

typedef ULONGLONG REGHANDLE, *PREGHANDLE;

// One piece of the data of an event.
typedef struct _EVENT_DATA_DESCRIPTOR
{
    ULONGLONG Ptr;
    ULONG Size;
    ULONG Reserved;
} EVENT_DATA_DESCRIPTOR, *PEVENT_DATA_DESCRIPTOR;

typedef struct _EVENT_DESCRIPTOR
{
    USHORT Id;
    UCHAR Version;
    UCHAR Channel;
    UCHAR Level;
    UCHAR Opcode;
    USHORT Task;
    ULONGLONG Keyword;
} EVENT_DESCRIPTOR, *PEVENT_DESCRIPTOR;
typedef const EVENT_DESCRIPTOR* PCEVENT_DESCRIPTOR;

typedef struct _EVENT_FILTER_DESCRIPTOR
{
    ULONGLONG Ptr;
    ULONG Size;
    ULONG Type;
} EVENT_FILTER_DESCRIPTOR, *PEVENT_FILTER_DESCRIPTOR;

typedef VOID(NTAPI* PENABLECALLBACK)(LPCGUID SourceId, ULONG IsEnabled, UCHAR Level, ULONGLONG MatchAnyKeyword,
    ULONGLONG MatchAllKeyword, PEVENT_FILTER_DESCRIPTOR FilterData, PVOID CallbackContext);

// The first registration in the process starts a thread of the layer, and the last one ends it. The callback may be
// called during the registration, and later on that thread.
ULONG WINAPI EventRegister(
    LPCGUID ProviderId, PENABLECALLBACK EnableCallback, PVOID CallbackContext, PREGHANDLE RegHandle) QXP(EventRegister);
// Waits for a callback in progress.
ULONG WINAPI EventUnregister(REGHANDLE RegHandle) QXP(EventUnregister);
// Never waits: an event that can't be recorded counts as lost.
ULONG WINAPI EventWrite(REGHANDLE RegHandle, PCEVENT_DESCRIPTOR EventDescriptor, ULONG UserDataCount,
    PEVENT_DATA_DESCRIPTOR UserData) QXP(EventWrite);

// The layer's own control of the session, which takes an administrator's tools on the system. `level` 0 means all
// levels. Returns ERROR_ALREADY_EXISTS if a session is recording. The file must not exist.
DWORD WINAPI QxStartTrace(LPCWSTR lpFileName, DWORD level) QXP(QxStartTrace);
// Stops the session, waits up to a second until all processes have written their events, and copies the name of its
// file. Returns ERROR_NOT_FOUND if there is none.
DWORD WINAPI QxStopTrace(LPWSTR lpFileName, DWORD nSize) QXP(QxStopTrace);

EXTERN_C_END
