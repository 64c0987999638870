// The libraries that are bound late, each with the functions that are used of it. A function without a signature here
// gets one with the code that calls it.
#pragma once

#include "core/late_load.h"

namespace qx
{

class clsKernel32Base : public CLateLoadBase
{
public:
    clsKernel32Base() : CLateLoadBase(L"kernel32") {}

    LateProcedure EnumLanguageGroupLocales{*this, L"EnumLanguageGroupLocales", 16};
    LateProcedure EnumSystemLanguageGroups{*this, L"EnumSystemLanguageGroups", 12};
    LateProcedure GetActiveProcessorCount{*this, L"GetActiveProcessorCount", 4};
    LateFunction<DWORD()> GetCurrentProcessorNumber{*this, L"GetCurrentProcessorNumber"};
    LateProcedure GetCurrentProcessorNumberEx{*this, L"GetCurrentProcessorNumberEx", 4};
    LateFunction<DWORD(DWORD, wchar_t*)> GetDllDirectory{*this, L"GetDllDirectory", 8};
    LateProcedure GetProcessGroupAffinity{*this, L"GetProcessGroupAffinity", 12};
    LateFunction<ULONGLONG()> GetTickCount64{*this, L"GetTickCount64"};
    LateFunction<LANGID()> GetUserDefaultUILanguage{*this, L"GetUserDefaultUILanguage"};
    LateProcedure HeapCompact{*this, L"HeapCompact", 8};
    LateProcedure HeapLock{*this, L"HeapLock", 4};
    LateProcedure HeapUnlock{*this, L"HeapUnlock", 4};
    LateProcedure HeapValidate{*this, L"HeapValidate", 12};
    LateProcedure HeapWalk{*this, L"HeapWalk", 8};
    LateFunction<BOOL()> IsDebuggerPresent{*this, L"IsDebuggerPresent"};
    LateFunction<int(LCID, wchar_t*, int, DWORD)> LCIDToLocaleName{*this, L"LCIDToLocaleName", 16};
    LateFunction<int(const wchar_t*, DWORD, const wchar_t*, int, wchar_t*, int, void*, void*, LPARAM)> LCMapStringEx{
        *this, L"LCMapStringEx", 36};
    LateProcedure RtlCaptureContext{*this, L"RtlCaptureContext", 4};
    LateFunction<WORD(DWORD, DWORD, void**, DWORD*)> RtlCaptureStackBackTrace{*this, L"RtlCaptureStackBackTrace", 16};
    LateFunction<BOOL(const wchar_t*)> SetDllDirectory{*this, L"SetDllDirectory", 4};
    LateProcedure Wow64RevertWow64FsRedirection{*this, L"Wow64RevertWow64FsRedirection", 4};
};

class clsKernel32 : public clsKernel32Base
{
};

class clsAdvAPI32 : public CLateLoadBase
{
public:
    clsAdvAPI32() : CLateLoadBase(L"AdvAPI32") {}

    LateProcedure AdjustTokenPrivileges{*this, L"AdjustTokenPrivileges", 24};
    LateProcedure BuildExplicitAccessWithName{*this, L"BuildExplicitAccessWithName", 20};
    LateProcedure ConvertStringSidToSid{*this, L"ConvertStringSidToSid", 8};
    LateProcedure CopySid{*this, L"CopySid", 12};
    LateProcedure EventRegister{*this, L"EventRegister", 16};
    LateProcedure EventUnregister{*this, L"EventUnregister", 8};
    LateProcedure EventWrite{*this, L"EventWrite", 20};
    LateProcedure GetLengthSid{*this, L"GetLengthSid", 4};
    LateProcedure GetNamedSecurityInfo{*this, L"GetNamedSecurityInfo", 32};
    LateProcedure GetSidLengthRequired{*this, L"GetSidLengthRequired", 4};
    LateProcedure GetSidSubAuthorityCount{*this, L"GetSidSubAuthorityCount", 4};
    LateProcedure GetTokenInformation{*this, L"GetTokenInformation", 20};
    LateProcedure ImpersonateLoggedOnUser{*this, L"ImpersonateLoggedOnUser", 4};
    LateProcedure LogonUser{*this, L"LogonUser", 24};
    LateProcedure LookupAccountName{*this, L"LookupAccountName", 28};
    LateProcedure LookupAccountSid{*this, L"LookupAccountSid", 28};
    LateProcedure LookupPrivilegeValue{*this, L"LookupPrivilegeValue", 12};
    LateProcedure OpenProcessToken{*this, L"OpenProcessToken", 12};
    LateProcedure OpenThreadToken{*this, L"OpenThreadToken", 16};
    LateProcedure RevertToSelf{*this, L"RevertToSelf"};
    LateProcedure SetEntriesInAcl{*this, L"SetEntriesInAcl", 16};
    LateProcedure SetNamedSecurityInfo{*this, L"SetNamedSecurityInfo", 28};
};

class clsNTdll : public CLateLoadBase
{
public:
    clsNTdll() : CLateLoadBase(L"ntdll") {}

    LateFunction<LONG(CRITICAL_SECTION*)> RtlLeaveCriticalSection{*this, L"RtlLeaveCriticalSection", 4};
    LateFunction<BOOL(CRITICAL_SECTION*)> RtlTryEnterCriticalSection{*this, L"RtlTryEnterCriticalSection", 4};
};

class clsPSAPI : public CLateLoadBase
{
public:
    clsPSAPI() : CLateLoadBase(L"psapi") {}

    LateProcedure EnumProcessModules{*this, L"EnumProcessModules", 16};
    LateProcedure GetModuleBaseName{*this, L"GetModuleBaseName", 16};
    LateProcedure GetModuleFileNameEx{*this, L"GetModuleFileNameEx", 16};
    LateProcedure GetModuleInformation{*this, L"GetModuleInformation", 16};
};

class clsShell32 : public CLateLoadBase
{
public:
    clsShell32() : CLateLoadBase(L"shell32") {}

    LateProcedure SHCreateItemFromParsingName{*this, L"SHCreateItemFromParsingName", 16};
    LateProcedure SHGetPropertyStoreFromParsingName{*this, L"SHGetPropertyStoreFromParsingName", 20};
};

class clsShlwapi : public CLateLoadBase
{
public:
    clsShlwapi() : CLateLoadBase(L"shlwapi") {}

    LateFunction<BOOL(wchar_t*, const wchar_t*)> PathCanonicalize{*this, L"PathCanonicalize", 8};
};

class clsNetAPI32 : public CLateLoadBase
{
public:
    clsNetAPI32() : CLateLoadBase(L"NetAPI32") {}

    LateProcedure NetFileEnum{*this, L"NetFileEnum", 36};
    LateProcedure NetApiBufferFree{*this, L"NetApiBufferFree", 4};
};

class clsCredUIWrapper : public CLateLoadBase
{
public:
    clsCredUIWrapper() : CLateLoadBase(L"credui") {}

    LateProcedure CredUIParseUserName{*this, L"CredUIParseUserName", 20};
    LateProcedure CredUIPromptForCredentials{*this, L"CredUIPromptForCredentials", 40};
    LateProcedure CredUIConfirmCredentials{*this, L"CredUIConfirmCredentials", 8};
};

// One object for each library, made at its first use and kept as long as the module.
clsKernel32& Kernel32();
clsAdvAPI32& AdvAPI32();
clsNTdll& NTdll();
clsPSAPI& PSAPI();
clsShell32& Shell32();
clsShlwapi& Shlwapi();
clsNetAPI32& NetAPI32();
clsCredUIWrapper& CredUI();

} // namespace qx
