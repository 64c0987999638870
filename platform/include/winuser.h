// Messages, message boxes, case conversion, string resources.
#pragma once

#include <windef.h>

// Types and names of resources that are given by number.
#define MAKEINTRESOURCEW(i) ((LPWSTR)(ULONG_PTR)(WORD)(i))
#define RT_STRING MAKEINTRESOURCEW(6)
#define RT_RCDATA MAKEINTRESOURCEW(10)
#define RT_VERSION MAKEINTRESOURCEW(16)
#define RT_MANIFEST MAKEINTRESOURCEW(24)

#define SM_REMOTESESSION 0x1000
#define UOI_FLAGS 1
#define WSF_VISIBLE 0x0001

#define WM_APP 0x8000

#define PM_NOREMOVE 0x0000
#define PM_REMOVE 0x0001

#define QS_KEY 0x0001
#define QS_MOUSEMOVE 0x0002
#define QS_MOUSEBUTTON 0x0004
#define QS_POSTMESSAGE 0x0008
#define QS_TIMER 0x0010
#define QS_PAINT 0x0020
#define QS_SENDMESSAGE 0x0040
#define QS_HOTKEY 0x0080
#define QS_ALLPOSTMESSAGE 0x0100
#define QS_RAWINPUT 0x0400
#define QS_MOUSE (QS_MOUSEMOVE | QS_MOUSEBUTTON)
#define QS_INPUT (QS_MOUSE | QS_KEY | QS_RAWINPUT)
#define QS_ALLEVENTS (QS_INPUT | QS_POSTMESSAGE | QS_TIMER | QS_PAINT | QS_HOTKEY)
#define QS_ALLINPUT (QS_ALLEVENTS | QS_SENDMESSAGE)

#define MWMO_WAITALL 0x0001
#define MWMO_ALERTABLE 0x0002

#define MB_OKCANCEL 0x00000001
#define MB_YESNOCANCEL 0x00000003
#define MB_YESNO 0x00000004
#define MB_RETRYCANCEL 0x00000005
#define MB_CANCELTRYCONTINUE 0x00000006
#define MB_TYPEMASK 0x0000000F
#define MB_ICONHAND 0x00000010
#define MB_ICONASTERISK 0x00000040
#define MB_ICONERROR MB_ICONHAND
#define MB_DEFBUTTON2 0x00000100
#define MB_DEFBUTTON3 0x00000200
#define MB_DEFMASK 0x00000F00
#define MB_TASKMODAL 0x00002000
#define MB_SETFOREGROUND 0x00010000

#define IDOK 1
#define IDCANCEL 2
#define IDABORT 3
#define IDRETRY 4
#define IDIGNORE 5
#define IDYES 6
#define IDNO 7
#define IDTRYAGAIN 10
#define IDCONTINUE 11

EXTERN_C_START

typedef struct tagMSG
{
    HWND hwnd;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    DWORD time;
    POINT pt;
} MSG, *PMSG, *NPMSG, *LPMSG;

// Message queues. A thread's queue is created when the thread first calls one of these functions.
BOOL WINAPI PeekMessageW(LPMSG lpMsg, HWND hWnd, UINT wMsgFilterMin, UINT wMsgFilterMax, UINT wRemoveMsg)
    QXP(PeekMessageW);
BOOL WINAPI TranslateMessage(const MSG* lpMsg) QXP(TranslateMessage);
LRESULT WINAPI DispatchMessageW(const MSG* lpMsg) QXP(DispatchMessageW);
BOOL WINAPI PostThreadMessageW(DWORD idThread, UINT Msg, WPARAM wParam, LPARAM lParam) QXP(PostThreadMessageW);
DWORD WINAPI MsgWaitForMultipleObjects(DWORD nCount, const HANDLE* pHandles, BOOL fWaitAll, DWORD dwMilliseconds,
    DWORD dwWakeMask) QXP(MsgWaitForMultipleObjects);
DWORD WINAPI MsgWaitForMultipleObjectsEx(DWORD nCount, const HANDLE* pHandles, DWORD dwMilliseconds, DWORD dwWakeMask,
    DWORD dwFlags) QXP(MsgWaitForMultipleObjectsEx);

// Prints the text to the standard error stream. The answer is the button named by the environment variable
// QXPLATFORM_MESSAGEBOX, such as "cancel", otherwise the default button.
int WINAPI MessageBoxW(HWND hWnd, LPCWSTR lpText, LPCWSTR lpCaption, UINT uType) QXP(MessageBoxW);
BOOL WINAPI MessageBeep(UINT uType) QXP(MessageBeep);

typedef struct tagUSEROBJECTFLAGS
{
    BOOL fInherit;
    BOOL fReserved;
    DWORD dwFlags;
} USEROBJECTFLAGS, *PUSEROBJECTFLAGS;

// There is no screen, so all metrics are 0, and there is no remote session.
int WINAPI GetSystemMetrics(int nIndex) QXP(GetSystemMetrics);

// The process's only window station, which is invisible. Only its flags can be queried.
HWINSTA WINAPI GetProcessWindowStation(void) QXP(GetProcessWindowStation);
BOOL WINAPI GetUserObjectInformationW(HANDLE hObj, int nIndex, PVOID pvInfo, DWORD nLength, LPDWORD lpnLengthNeeded)
    QXP(GetUserObjectInformationW);

// The session's clipboard, which is stored on disk. Data is passed in blocks of global memory and stored immediately;
// there is no conversion between formats.
#define CF_TEXT 1
BOOL WINAPI OpenClipboard(HWND hWndNewOwner) QXP(OpenClipboard);
BOOL WINAPI CloseClipboard(void) QXP(CloseClipboard);
BOOL WINAPI EmptyClipboard(void) QXP(EmptyClipboard);
HANDLE WINAPI SetClipboardData(UINT uFormat, HANDLE hMem) QXP(SetClipboardData);
HANDLE WINAPI GetClipboardData(UINT uFormat) QXP(GetClipboardData);
BOOL WINAPI IsClipboardFormatAvailable(UINT format) QXP(IsClipboardFormatAvailable);
UINT WINAPI RegisterClipboardFormatW(LPCWSTR lpszFormat) QXP(RegisterClipboardFormatW);

// A pointer whose high part is 0 is a single character, and so is the result.
LPWSTR WINAPI CharUpperW(LPWSTR lpsz) QXP(CharUpperW);
LPWSTR WINAPI CharLowerW(LPWSTR lpsz) QXP(CharLowerW);

EXTERN_C_END

#ifdef __cplusplus
static_assert(sizeof(MSG) == 48);
#endif
