// The late-bound libraries and the functions that are used from each. Functions that nothing calls yet have no
// signature; add one with the first caller.
//
// The members have the prefix "p_", which Resolve removes. Many of the function names are macros in the system's
// headers, so without the prefix the result would depend on which headers are included.
#pragma once

#include "module/late_load.h"
#include "module/sibling_library.h"

#include <heapapi.h>
// These need <windows.h>, which comes with the headers above.
#include <accctrl.h>
#include <evntprov.h>
#include <lmcons.h>
#include <lmshare.h>
#include <psapi.h>
#include <tlhelp32.h>

struct IBindCtx;
struct IMalloc;

namespace qx
{

class clsKernel32Base : public CLateLoadBase
{
public:
    clsKernel32Base() : CLateLoadBase(L"kernel32") {}

    LateFunction<BOOL(LANGGROUPLOCALE_ENUMPROCW, LGRPID, DWORD, LONG_PTR)> p_EnumLanguageGroupLocales{
        *this, L"p_EnumLanguageGroupLocales", 16};
    LateFunction<BOOL(LANGUAGEGROUP_ENUMPROCW, DWORD, LONG_PTR)> p_EnumSystemLanguageGroups{
        *this, L"p_EnumSystemLanguageGroups", 12};
    LateFunction<DWORD(WORD)> p_GetActiveProcessorCount{*this, L"p_GetActiveProcessorCount", 4};
    LateFunction<DWORD()> p_GetCurrentProcessorNumber{*this, L"p_GetCurrentProcessorNumber"};
    LateFunction<void(PROCESSOR_NUMBER*)> p_GetCurrentProcessorNumberEx{*this, L"p_GetCurrentProcessorNumberEx", 4};
    LateFunction<DWORD(DWORD, wchar_t*)> p_GetDllDirectory{*this, L"p_GetDllDirectory", 8};
    LateFunction<BOOL(HANDLE, USHORT*, USHORT*)> p_GetProcessGroupAffinity{*this, L"p_GetProcessGroupAffinity", 12};
    LateFunction<ULONGLONG()> p_GetTickCount64{*this, L"p_GetTickCount64"};
    LateFunction<LANGID()> p_GetUserDefaultUILanguage{*this, L"p_GetUserDefaultUILanguage"};
    LateFunction<SIZE_T(HANDLE, DWORD)> p_HeapCompact{*this, L"p_HeapCompact", 8};
    LateFunction<BOOL(HANDLE)> p_HeapLock{*this, L"p_HeapLock", 4};
    LateFunction<BOOL(HANDLE)> p_HeapUnlock{*this, L"p_HeapUnlock", 4};
    LateFunction<BOOL(HANDLE, DWORD, const void*)> p_HeapValidate{*this, L"p_HeapValidate", 12};
    LateFunction<BOOL(HANDLE, PROCESS_HEAP_ENTRY*)> p_HeapWalk{*this, L"p_HeapWalk", 8};
    LateFunction<BOOL()> p_IsDebuggerPresent{*this, L"p_IsDebuggerPresent"};
    LateFunction<int(LCID, wchar_t*, int, DWORD)> p_LCIDToLocaleName{*this, L"p_LCIDToLocaleName", 16};
    LateFunction<int(const wchar_t*, DWORD, const wchar_t*, int, wchar_t*, int, void*, void*, LPARAM)> p_LCMapStringEx{
        *this, L"p_LCMapStringEx", 36};
    // Functions with the prefix "Qx" exist only in the Linux layer.
    LateProcedure p_QxCaptureFrom{*this, L"p_QxCaptureFrom", 12};
    LateProcedure p_QxHeapFreeMarked{*this, L"p_QxHeapFreeMarked", 16};
    LateProcedure p_QxHeapSizeOfAny{*this, L"p_QxHeapSizeOfAny", 12};
    LateProcedure p_QxSingleThreadedFlag{*this, L"p_QxSingleThreadedFlag"};
    LateFunction<void(CONTEXT*)> p_RtlCaptureContext{*this, L"p_RtlCaptureContext", 4};
    LateFunction<WORD(DWORD, DWORD, void**, DWORD*)> p_RtlCaptureStackBackTrace{
        *this, L"p_RtlCaptureStackBackTrace", 16};
    LateFunction<BOOL(const wchar_t*)> p_SetDllDirectory{*this, L"p_SetDllDirectory", 4};
    LateProcedure p_Wow64RevertWow64FsRedirection{*this, L"p_Wow64RevertWow64FsRedirection", 4};
};

// Functions that list the modules of a process in a snapshot. They are in kernel32 or in a separate library.
template <class Library>
class SnapshotFunctions : public Library
{
public:
    using Library::Library;

    LateFunction<HANDLE(DWORD, DWORD)> p_CreateToolhelp32Snapshot{*this, L"p_CreateToolhelp32Snapshot", 8};
    LateFunction<BOOL(HANDLE, MODULEENTRY32W*)> p_Module32First{*this, L"p_Module32FirstW", 8};
    LateFunction<BOOL(HANDLE, MODULEENTRY32W*)> p_Module32Next{*this, L"p_Module32NextW", 8};
};

class clsKernel32 : public SnapshotFunctions<clsKernel32Base>
{
};

class clsTlHelp32 : public SnapshotFunctions<CLateLoadBase>
{
public:
    clsTlHelp32() : SnapshotFunctions(L"tlhelp32") {}
};

class clsAdvAPI32 : public CLateLoadBase
{
public:
    clsAdvAPI32() : CLateLoadBase(L"AdvAPI32") {}

    LateFunction<BOOL(HANDLE, BOOL, TOKEN_PRIVILEGES*, DWORD, TOKEN_PRIVILEGES*, DWORD*)> p_AdjustTokenPrivileges{
        *this, L"p_AdjustTokenPrivileges", 24};
    LateFunction<void(EXPLICIT_ACCESS_W*, const wchar_t*, DWORD, ACCESS_MODE, DWORD)> p_BuildExplicitAccessWithName{
        *this, L"p_BuildExplicitAccessWithName", 20};
    LateFunction<BOOL(const wchar_t*, PSID*)> p_ConvertStringSidToSid{*this, L"p_ConvertStringSidToSid", 8};
    LateFunction<BOOL(DWORD, PSID, PSID)> p_CopySid{*this, L"p_CopySid", 12};
    LateFunction<ULONG(const GUID*, PENABLECALLBACK, void*, REGHANDLE*)> p_EventRegister{*this, L"p_EventRegister", 16};
    LateFunction<ULONG(REGHANDLE)> p_EventUnregister{*this, L"p_EventUnregister", 8};
    LateFunction<ULONG(REGHANDLE, const EVENT_DESCRIPTOR*, ULONG, EVENT_DATA_DESCRIPTOR*)> p_EventWrite{
        *this, L"p_EventWrite", 20};
    // The layer's own, like the functions of kernel32 with this prefix.
    LateFunction<DWORD(const wchar_t*, DWORD)> p_QxStartTrace{*this, L"p_QxStartTrace", 8};
    LateFunction<DWORD(wchar_t*, DWORD)> p_QxStopTrace{*this, L"p_QxStopTrace", 8};
    LateProcedure p_GetLengthSid{*this, L"p_GetLengthSid", 4};
    LateFunction<DWORD(
        const wchar_t*, SE_OBJECT_TYPE, SECURITY_INFORMATION, PSID*, PSID*, PACL*, PACL*, PSECURITY_DESCRIPTOR*)>
        p_GetNamedSecurityInfo{*this, L"p_GetNamedSecurityInfo", 32};
    LateFunction<DWORD(BYTE)> p_GetSidLengthRequired{*this, L"p_GetSidLengthRequired", 4};
    LateFunction<BYTE*(PSID)> p_GetSidSubAuthorityCount{*this, L"p_GetSidSubAuthorityCount", 4};
    LateFunction<BOOL(HANDLE, TOKEN_INFORMATION_CLASS, void*, DWORD, DWORD*)> p_GetTokenInformation{
        *this, L"p_GetTokenInformation", 20};
    LateProcedure p_ImpersonateLoggedOnUser{*this, L"p_ImpersonateLoggedOnUser", 4};
    LateProcedure p_LogonUser{*this, L"p_LogonUser", 24};
    LateProcedure p_LookupAccountName{*this, L"p_LookupAccountName", 28};
    LateFunction<BOOL(const wchar_t*, PSID, wchar_t*, DWORD*, wchar_t*, DWORD*, SID_NAME_USE*)> p_LookupAccountSid{
        *this, L"p_LookupAccountSid", 28};
    LateFunction<BOOL(const wchar_t*, const wchar_t*, LUID*)> p_LookupPrivilegeValue{
        *this, L"p_LookupPrivilegeValue", 12};
    LateFunction<BOOL(HANDLE, DWORD, HANDLE*)> p_OpenProcessToken{*this, L"p_OpenProcessToken", 12};
    LateProcedure p_OpenThreadToken{*this, L"p_OpenThreadToken", 16};
    LateProcedure p_RevertToSelf{*this, L"p_RevertToSelf"};
    LateFunction<DWORD(ULONG, EXPLICIT_ACCESS_W*, PACL, PACL*)> p_SetEntriesInAcl{*this, L"p_SetEntriesInAcl", 16};
    LateFunction<DWORD(const wchar_t*, SE_OBJECT_TYPE, SECURITY_INFORMATION, PSID, PSID, PACL, PACL)>
        p_SetNamedSecurityInfo{*this, L"p_SetNamedSecurityInfo", 28};
};

class clsNTdll : public CLateLoadBase
{
public:
    clsNTdll() : CLateLoadBase(L"ntdll") {}

    LateFunction<LONG(CRITICAL_SECTION*)> p_RtlLeaveCriticalSection{*this, L"p_RtlLeaveCriticalSection", 4};
    LateFunction<BOOL(CRITICAL_SECTION*)> p_RtlTryEnterCriticalSection{*this, L"p_RtlTryEnterCriticalSection", 4};
};

class clsPSAPI : public CLateLoadBase
{
public:
    clsPSAPI() : CLateLoadBase(L"psapi") {}

    LateFunction<BOOL(HANDLE, HMODULE*, DWORD, DWORD*)> p_EnumProcessModules{*this, L"p_EnumProcessModules", 16};
    LateFunction<DWORD(HANDLE, HMODULE, wchar_t*, DWORD)> p_GetModuleBaseName{*this, L"p_GetModuleBaseName", 16};
    LateFunction<DWORD(HANDLE, HMODULE, wchar_t*, DWORD)> p_GetModuleFileNameEx{*this, L"p_GetModuleFileNameEx", 16};
    LateFunction<BOOL(HANDLE, HMODULE, MODULEINFO*, DWORD)> p_GetModuleInformation{
        *this, L"p_GetModuleInformation", 16};
};

class clsShell32 : public CLateLoadBase
{
public:
    clsShell32() : CLateLoadBase(L"shell32") {}

    LateFunction<HRESULT(const wchar_t*, IBindCtx*, const IID&, void**)> p_SHCreateItemFromParsingName{
        *this, L"p_SHCreateItemFromParsingName", 16};
    LateFunction<HRESULT(const wchar_t*, IBindCtx*, int, const IID&, void**)> p_SHGetPropertyStoreFromParsingName{
        *this, L"p_SHGetPropertyStoreFromParsingName", 20};
};

class clsShlwapi : public CLateLoadBase
{
public:
    clsShlwapi() : CLateLoadBase(L"shlwapi") {}

    LateFunction<BOOL(wchar_t*, const wchar_t*)> p_PathCanonicalize{*this, L"p_PathCanonicalize", 8};
};

class clsNetAPI32 : public CLateLoadBase
{
public:
    clsNetAPI32() : CLateLoadBase(L"NetAPI32") {}

    LateFunction<NET_API_STATUS(
        const wchar_t*, const wchar_t*, const wchar_t*, DWORD, BYTE**, DWORD, DWORD*, DWORD*, ULONG_PTR*)>
        p_NetFileEnum{*this, L"p_NetFileEnum", 36};
    LateFunction<NET_API_STATUS(void*)> p_NetApiBufferFree{*this, L"p_NetApiBufferFree", 4};
};

class clsXMLLite : public CLateLoadBase
{
public:
    clsXMLLite() : CLateLoadBase(L"XmlLite") {}

    LateFunction<HRESULT(const IID&, void**, IMalloc*)> p_CreateXmlReader{*this, L"p_CreateXmlReader", 12};
};

class clsCredUIWrapper : public CLateLoadBase
{
public:
    clsCredUIWrapper() : CLateLoadBase(L"credui") {}

    LateProcedure p_CredUIParseUserName{*this, L"p_CredUIParseUserName", 20};
    LateProcedure p_CredUIPromptForCredentials{*this, L"p_CredUIPromptForCredentials", 40};
    LateProcedure p_CredUIConfirmCredentials{*this, L"p_CredUIConfirmCredentials", 8};
};

// Functions of another copy of this library.
class clsTrlmUTILBase : public CSiblingLibrary
{
public:
    clsTrlmUTILBase() : CSiblingLibrary(L"TRLMUTIL", L"ut") {}

    LateProcedure p_UtilExHandlerEndProtection{*this, L"p_UtilExHandlerEndProtection"};
    LateProcedure p_UtilExHandlerStartProtection{*this, L"p_UtilExHandlerStartProtection"};
    LateProcedure p_UtilGetDBGHELPThreadingCS{*this, L"p_UtilGetDBGHELPThreadingCS"};
    LateFunction<BOOL()> p_UtilGetUIInteractionAllowed{*this, L"p_UtilGetUIInteractionAllowed"};
};

class clsTrlmUTIL : public clsTrlmUTILBase
{
};

// The control library: the progress dialog and path translation. Jobs and dialogs are handles.
class clsTrlmCTLBase : public CSiblingLibrary
{
public:
    clsTrlmCTLBase() : CSiblingLibrary(L"TRLMCTL", L"ct") {}

    LateFunction<std::int32_t(std::int64_t)> p_CtlAbortDlgCheckAbort{*this, L"p_CtlAbortDlgCheckAbort"};
    LateFunction<void(std::int64_t)> p_CtlAbortDlgEnd{*this, L"p_CtlAbortDlgEnd"};
    LateFunction<HWND(std::int64_t)> p_CtlAbortDlgHWnd{*this, L"p_CtlAbortDlgHWnd"};
    LateFunction<void(std::int64_t, const wchar_t*, std::int32_t)> p_CtlAbortDlgSetText{*this, L"p_CtlAbortDlgSetText"};
    LateFunction<std::int64_t(HWND, const wchar_t*, const wchar_t*, std::int32_t)> p_CtlAbortDlgStart{
        *this, L"p_CtlAbortDlgStart"};
    LateFunction<void()> p_CtlJobClose{*this, L"p_CtlJobClose"};
    LateFunction<void(std::int64_t)> p_CtlJobCloseEx{*this, L"p_CtlJobCloseEx"};
    LateFunction<void()> p_CtlJobOpen{*this, L"p_CtlJobOpen"};
    LateFunction<std::int64_t()> p_CtlJobOpenEx{*this, L"p_CtlJobOpenEx"};
};

class clsTrlmCTL : public clsTrlmCTLBase
{
public:
    clsTrlmCTL() = default;
    // Closes the job that Load opened.
    ~clsTrlmCTL() override;

    // Also stores the version of the loaded library as the sibling version of the whole module. Opens a job unless the
    // library was already in the process.
    bool Load() override;

private:
    bool _hasJob = false;
    std::int64_t _job = 0;
};

// A control library that is already loaded, whatever its name. This object neither loads nor unloads it.
class clsCTL : public CLateLoadBase
{
public:
    explicit clsCTL(HMODULE module);

    bool Load() override;

    LateProcedure p_CtlXlatPath{*this, L"p_CtlXlatPath"};
};

// Libraries from which nothing is called yet.
class clsGDI32 : public CLateLoadBase
{
public:
    clsGDI32() : CLateLoadBase(L"gdi32") {}
};

class clsUXTheme : public CLateLoadBase
{
public:
    clsUXTheme() : CLateLoadBase(L"uxtheme") {}
};

class clsShCore : public CLateLoadBase
{
public:
    clsShCore() : CLateLoadBase(L"shcore") {}
};

class clsUser32Base : public CLateLoadBase
{
public:
    clsUser32Base() : CLateLoadBase(L"user32") {}
};

class clsUser32 : public clsUser32Base
{
public:
    LateFunction<HWND(HWND)> p_GetParent{*this, L"p_GetParent", 4};
    LateFunction<LONG(HWND, int)> p_GetWindowLong{*this, L"p_GetWindowLongW", 8};
    LateFunction<BOOL(HWND)> p_IsWindow{*this, L"p_IsWindow", 4};
    LateFunction<BOOL(HWND)> p_LockWindowUpdate{*this, L"p_LockWindowUpdate", 4};
    LateFunction<BOOL(HWND, HWND, int, int, int, int, UINT)> p_SetWindowPos{*this, L"p_SetWindowPos", 28};
};

class clsComCtl32 : public CLateLoadBase
{
public:
    clsComCtl32() : CLateLoadBase(L"ComCtl32") {}
};

class clsComDlg32 : public CLateLoadBase
{
public:
    clsComDlg32() : CLateLoadBase(L"ComDlg32") {}
};

class clsDWMAPI : public CLateLoadBase
{
public:
    clsDWMAPI() : CLateLoadBase(L"dwmapi") {}
};

class clsWINSPOOL : public CLateLoadBase
{
public:
    clsWINSPOOL() : CLateLoadBase(L"WINSPOOL.DRV") {}
};

class clsIEFrame : public CLateLoadBase
{
public:
    clsIEFrame() : CLateLoadBase(L"IEFrame") {}
};

// Each function returns the single object for its library, which is created at first use and lives as long as the
// module.
clsKernel32& Kernel32();
clsAdvAPI32& AdvAPI32();
clsNTdll& NTdll();
clsPSAPI& PSAPI();
clsTlHelp32& TlHelp32();
clsShell32& Shell32();
clsShlwapi& Shlwapi();
clsNetAPI32& NetAPI32();
clsXMLLite& XMLLite();
clsCredUIWrapper& CredUI();
clsTrlmUTIL& TrlmUTIL();
clsTrlmCTL& TrlmCTL();
clsGDI32& GDI32();
clsUXTheme& UXTheme();
clsShCore& ShCore();
clsUser32& User32();
clsComCtl32& ComCtl32();
clsComDlg32& ComDlg32();
clsDWMAPI& DWMAPI();
clsWINSPOOL& WINSPOOL();
clsIEFrame& IEFrame();

} // namespace qx
