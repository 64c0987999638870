// The system's debug-help library, bound at run time.
#pragma once

#include "module/late_load.h"

// The second header needs the first one.
#include <windows.h>

#include <dbghelp.h>

namespace qx
{

class clsRGDBGHELP : public CLateLoadBase
{
public:
    clsRGDBGHELP() : CLateLoadBase(L"dbghelp.dll") {}

    // Searches the application's folder, the folders of the debugging tools, and the system's search path.
    bool Load() override;

    LateFunction<BOOL(HANDLE, PCSTR, BOOL)> p_SymInitialize{*this, L"p_SymInitialize", 12};
    LateFunction<BOOL(HANDLE)> p_SymCleanup{*this, L"p_SymCleanup", 4};
    LateFunction<DWORD()> p_SymGetOptions{*this, L"p_SymGetOptions"};
    LateFunction<DWORD(DWORD)> p_SymSetOptions{*this, L"p_SymSetOptions", 4};
    LateFunction<BOOL(HANDLE, PSYMBOL_REGISTERED_CALLBACK64, ULONG64)> p_SymRegisterCallback64{
        *this, L"p_SymRegisterCallback64", 16};
    LateFunction<BOOL(HANDLE, DWORD64, DWORD64*, PIMAGEHLP_SYMBOL64)> p_SymGetSymFromAddr64{
        *this, L"p_SymGetSymFromAddr64", 20};
    LateFunction<BOOL(HANDLE, DWORD64, DWORD*, PIMAGEHLP_LINE64)> p_SymGetLineFromAddr64{
        *this, L"p_SymGetLineFromAddr64", 20};
    LateFunction<DWORD64(HANDLE, DWORD64)> p_SymGetModuleBase64{*this, L"p_SymGetModuleBase64", 12};
    LateFunction<BOOL(HANDLE, DWORD64, PIMAGEHLP_MODULE64)> p_SymGetModuleInfo64{*this, L"p_SymGetModuleInfo64", 16};
    LateFunction<PVOID(HANDLE, DWORD64)> p_SymFunctionTableAccess64{*this, L"p_SymFunctionTableAccess64", 12};
    LateFunction<DWORD64(HANDLE, HANDLE, PCSTR, PCSTR, DWORD64, DWORD)> p_SymLoadModule64{
        *this, L"p_SymLoadModule64", 28};
    LateFunction<DWORD64(HANDLE, HANDLE, PCSTR, PCSTR, DWORD64, DWORD, PMODLOAD_DATA, DWORD)> p_SymLoadModuleEx{
        *this, L"p_SymLoadModuleEx", 36};
    LateFunction<BOOL(HANDLE, PIMAGEHLP_STACK_FRAME, PIMAGEHLP_CONTEXT)> p_SymSetContext{*this, L"p_SymSetContext", 12};
    LateFunction<BOOL(HANDLE, ULONG64, PCSTR, PSYM_ENUMERATESYMBOLS_CALLBACK, PVOID)> p_SymEnumSymbols{
        *this, L"p_SymEnumSymbols", 24};
    LateFunction<BOOL(HANDLE, DWORD64, ULONG, IMAGEHLP_SYMBOL_TYPE_INFO, PVOID)> p_SymGetTypeInfo{
        *this, L"p_SymGetTypeInfo", 24};
    LateFunction<BOOL(HANDLE, PENUMLOADED_MODULES_CALLBACK64, PVOID)> p_EnumerateLoadedModules64{
        *this, L"p_EnumerateLoadedModules64", 12};
    LateFunction<BOOL(DWORD, HANDLE, HANDLE, LPSTACKFRAME64, PVOID, PREAD_PROCESS_MEMORY_ROUTINE64,
        PFUNCTION_TABLE_ACCESS_ROUTINE64, PGET_MODULE_BASE_ROUTINE64, PTRANSLATE_ADDRESS_ROUTINE64)>
        p_StackWalk64{*this, L"p_StackWalk64", 36};
    LateFunction<DWORD(PCSTR, PSTR, DWORD, DWORD)> p_UnDecorateSymbolName{*this, L"p_UnDecorateSymbolName", 16};
    LateProcedure p_MiniDumpWriteDump{*this, L"p_MiniDumpWriteDump", 28};
};

} // namespace qx
