// The functions of dbghelp.h, except stack walking. They throw nothing: bad_alloc, the only exception that can occur
// inside, is caught.
#include <dbghelp.h>
#include <errhandlingapi.h>
#include <winerror.h>

#include "dbghelp/sessions.h"
#include "dbghelp/undecorate.h"
#include "modules/image_list.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstring>
#include <new>
#include <string_view>

#include <elf.h>

using namespace qxplatform;

namespace
{

constexpr ULONG kFrameRegister = 22;

std::atomic<DWORD> options = SYMOPT_UNDNAME;

BOOL FailWith(DWORD error)
{
    SetLastError(error);
    return FALSE;
}

// Copies the part of a text that fits and terminates it. `size` must not be 0.
void CopyText(std::string_view text, char* buffer, std::size_t size)
{
    const std::size_t length = std::min(text.size(), size - 1);
    std::memcpy(buffer, text.data(), length);
    buffer[length] = 0;
}

// Calls an operation of the session, and returns its result or, without a session or memory, `failure`.
template <class Result, class Operation>
Result InSession(HANDLE process, Result failure, Operation operation) noexcept
{
    try
    {
        SymbolSession* const session = FindSession(process);
        return session == nullptr ? failure : operation(*session);
    }
    catch (const std::bad_alloc&)
    {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return failure;
    }
}

template <class Result, class Operation>
Result InModule(HANDLE process, DWORD64 address, Result failure, Operation operation) noexcept
{
    return InSession(process, failure,
        [&](SymbolSession& session)
        {
            SymbolModule* const module = session.FindModule(address);
            return module == nullptr ? failure : operation(*module);
        });
}

template <class Value>
BOOL StoreIfKnown(const std::optional<Value>& value, void* target)
{
    if (!value)
        return FailWith(ERROR_NOT_SUPPORTED);
    std::memcpy(target, &*value, sizeof(Value));
    return TRUE;
}

DWORD MachineOf(unsigned machine)
{
    return machine == EM_X86_64 ? IMAGE_FILE_MACHINE_AMD64 : machine == EM_AARCH64 ? IMAGE_FILE_MACHINE_ARM64 : 0;
}

} // namespace

BOOL WINAPI SymInitialize(HANDLE hProcess, PCSTR UserSearchPath, BOOL fInvadeProcess)
{
    if (fInvadeProcess)
        return FailWith(ERROR_NOT_SUPPORTED);
    try
    {
        return OpenSession(hProcess, UserSearchPath) ? TRUE : FALSE;
    }
    catch (const std::bad_alloc&)
    {
        return FailWith(ERROR_NOT_ENOUGH_MEMORY);
    }
}

BOOL WINAPI SymCleanup(HANDLE hProcess)
{
    return CloseSession(hProcess) ? TRUE : FALSE;
}

DWORD WINAPI SymGetOptions(void)
{
    return options;
}

DWORD WINAPI SymSetOptions(DWORD SymOptions)
{
    options = SymOptions;
    return SymOptions;
}

BOOL WINAPI SymRegisterCallback64(HANDLE hProcess, PSYMBOL_REGISTERED_CALLBACK64 CallbackFunction, ULONG64)
{
    if (CallbackFunction == nullptr)
        return FailWith(ERROR_INVALID_PARAMETER);
    return FindSession(hProcess) != nullptr ? TRUE : FALSE;
}

DWORD64 WINAPI SymLoadModuleEx(HANDLE hProcess, HANDLE, PCSTR ImageName, PCSTR ModuleName, DWORD64 BaseOfDll,
    DWORD DllSize, PMODLOAD_DATA Data, DWORD Flags)
{
    if (Data != nullptr || Flags != 0)
        return static_cast<DWORD64>(FailWith(ERROR_NOT_SUPPORTED));
    return InSession(hProcess, DWORD64{0},
        [&](SymbolSession& session)
        {
            const SymbolModule* const module = session.Load(ImageName, ModuleName, BaseOfDll, DllSize);
            return module == nullptr ? DWORD64{0} : DWORD64{module->Base()};
        });
}

DWORD64 WINAPI SymLoadModule64(
    HANDLE hProcess, HANDLE hFile, PCSTR ImageName, PCSTR ModuleName, DWORD64 BaseOfDll, DWORD SizeOfDll)
{
    return SymLoadModuleEx(hProcess, hFile, ImageName, ModuleName, BaseOfDll, SizeOfDll, nullptr, 0);
}

DWORD64 WINAPI SymGetModuleBase64(HANDLE hProcess, DWORD64 qwAddr)
{
    return InModule(hProcess, qwAddr, DWORD64{0}, [](const SymbolModule& module) { return DWORD64{module.Base()}; });
}

BOOL WINAPI SymGetModuleInfo64(HANDLE hProcess, DWORD64 qwAddr, PIMAGEHLP_MODULE64 ModuleInfo)
{
    if (ModuleInfo == nullptr || ModuleInfo->SizeOfStruct != sizeof *ModuleInfo)
        return FailWith(ERROR_INVALID_PARAMETER);
    return InModule(hProcess, qwAddr, FALSE,
        [&](const SymbolModule& module)
        {
            IMAGEHLP_MODULE64& info = *ModuleInfo;
            info = {};
            info.SizeOfStruct = sizeof info;
            info.BaseOfImage = module.Base();
            info.ImageSize = static_cast<DWORD>(module.Size());
            info.NumSyms = static_cast<DWORD>(module.SymbolCount());
            info.SymType = module.Type();
            const SymbolModule::Origin& origin = module.GetOrigin();
            CopyText(origin.name, info.ModuleName, sizeof info.ModuleName);
            CopyText(origin.path, info.ImageName, sizeof info.ImageName);
            CopyText(origin.path, info.LoadedImageName, sizeof info.LoadedImageName);
            CopyText(module.DebugPath(), info.LoadedPdbName, sizeof info.LoadedPdbName);
            info.LineNumbers = info.TypeInfo = module.Type() == SymDia;
            info.GlobalSymbols = info.Publics = module.Type() != SymNone;
            info.MachineType = MachineOf(module.Machine());
            return TRUE;
        });
}

BOOL WINAPI EnumerateLoadedModules64(
    HANDLE, PENUMLOADED_MODULES_CALLBACK64 EnumLoadedModulesCallback, PVOID UserContext)
{
    if (EnumLoadedModulesCallback == nullptr)
        return FailWith(ERROR_INVALID_PARAMETER);
    try
    {
        // The callback may call the loader, so the list is complete before it begins.
        for (const LoadedImage& image : ListLoadedImages())
            if (!EnumLoadedModulesCallback(
                    image.path.c_str(), image.begin, static_cast<ULONG>(image.size), UserContext))
                break;
        return TRUE;
    }
    catch (const std::bad_alloc&)
    {
        return FailWith(ERROR_NOT_ENOUGH_MEMORY);
    }
}

BOOL WINAPI SymGetSymFromAddr64(HANDLE hProcess, DWORD64 qwAddr, DWORD64* pdwDisplacement, PIMAGEHLP_SYMBOL64 Symbol)
{
    if (Symbol == nullptr || Symbol->SizeOfStruct < offsetof(IMAGEHLP_SYMBOL64, Name) || Symbol->MaxNameLength == 0)
        return FailWith(ERROR_INVALID_PARAMETER);
    return InModule(hProcess, qwAddr, FALSE,
        [&](SymbolModule& module)
        {
            const std::optional<SymbolPlace> found = module.FindSymbol(qwAddr);
            if (!found)
                return FailWith(ERROR_INVALID_ADDRESS);
            Symbol->Address = found->address;
            Symbol->Size = static_cast<DWORD>(found->size);
            Symbol->Flags = 0;
            CopyText(found->name, Symbol->Name, Symbol->MaxNameLength);
            if (pdwDisplacement != nullptr)
                *pdwDisplacement = qwAddr - found->address;
            return TRUE;
        });
}

BOOL WINAPI SymGetLineFromAddr64(HANDLE hProcess, DWORD64 qwAddr, PDWORD pdwDisplacement, PIMAGEHLP_LINE64 Line64)
{
    if (Line64 == nullptr || Line64->SizeOfStruct != sizeof *Line64)
        return FailWith(ERROR_INVALID_PARAMETER);
    return InModule(hProcess, qwAddr, FALSE,
        [&](SymbolModule& module)
        {
            const std::optional<SourceLine> found = module.FindLine(qwAddr);
            if (!found)
                return FailWith(ERROR_INVALID_ADDRESS);
            Line64->Key = nullptr;
            Line64->LineNumber = found->line;
            Line64->FileName = const_cast<char*>(found->file);
            Line64->Address = found->address;
            if (pdwDisplacement != nullptr)
                *pdwDisplacement = static_cast<DWORD>(qwAddr - found->address);
            return TRUE;
        });
}

DWORD WINAPI UnDecorateSymbolName(PCSTR name, PSTR outputString, DWORD maxStringLength, DWORD flags)
{
    if (name == nullptr || outputString == nullptr || maxStringLength == 0)
        return static_cast<DWORD>(FailWith(ERROR_INVALID_PARAMETER));
    try
    {
        std::string readable = DemangledName(name);
        if ((flags & UNDNAME_NAME_ONLY) != 0)
            readable = NameWithoutParameters(readable);
        CopyText(readable, outputString, maxStringLength);
        return static_cast<DWORD>(std::strlen(outputString));
    }
    catch (const std::bad_alloc&)
    {
        return static_cast<DWORD>(FailWith(ERROR_NOT_ENOUGH_MEMORY));
    }
}

BOOL WINAPI SymSetContext(HANDLE hProcess, PIMAGEHLP_STACK_FRAME StackFrame, PIMAGEHLP_CONTEXT)
{
    if (StackFrame == nullptr)
        return FailWith(ERROR_INVALID_PARAMETER);
    return InSession(hProcess, FALSE,
        [&](SymbolSession& session)
        {
            const std::uint64_t address = StackFrame->InstructionOffset;
            SymbolModule* const module = session.FindModule(address);
            if (module == nullptr)
                return FALSE;
            if (!module->FindFunction(address))
                return FailWith(ERROR_INVALID_ADDRESS);
            session.scope = {module, address, ListVariables(*module, address)};
            return TRUE;
        });
}

BOOL WINAPI SymEnumSymbols(HANDLE hProcess, ULONG64 BaseOfDll, PCSTR Mask,
    PSYM_ENUMERATESYMBOLS_CALLBACK EnumSymbolsCallback, PVOID UserContext)
{
    if (EnumSymbolsCallback == nullptr)
        return FailWith(ERROR_INVALID_PARAMETER);
    if (BaseOfDll != 0 || (Mask != nullptr && std::strcmp(Mask, "*") != 0))
        return FailWith(ERROR_NOT_SUPPORTED);
    return InSession(hProcess, FALSE,
        [&](SymbolSession& session)
        {
            const SymbolSession::Scope& scope = session.scope;
            std::vector<unsigned char> storage;
            ULONG index = 0;
            for (const Variable& variable : scope.variables)
            {
                storage.assign(sizeof(SYMBOL_INFO) + variable.name.size(), 0);
                auto& info = *reinterpret_cast<SYMBOL_INFO*>(storage.data());
                info.SizeOfStruct = sizeof info;
                info.TypeIndex = variable.type;
                info.Index = ++index;
                info.Size = static_cast<ULONG>(variable.size);
                info.ModBase = scope.module->Base();
                info.Flags = SYMFLAG_LOCAL | (variable.isParameter ? SYMFLAG_PARAMETER : 0) |
                             (variable.isInFrame ? SYMFLAG_REGREL : 0);
                info.Address = variable.address;
                info.Register = variable.isInFrame ? kFrameRegister : 0;
                info.Tag = SymTagData;
                info.NameLen = static_cast<ULONG>(variable.name.size());
                info.MaxNameLen = info.NameLen + 1;
                std::memcpy(info.Name, variable.name.c_str(), variable.name.size() + 1);
                if (!EnumSymbolsCallback(&info, info.Size, UserContext))
                    break;
            }
            return TRUE;
        });
}

BOOL WINAPI SymGetTypeInfo(
    HANDLE hProcess, DWORD64 ModBase, ULONG TypeId, IMAGEHLP_SYMBOL_TYPE_INFO GetType, PVOID pInfo)
{
    if (pInfo == nullptr)
        return FailWith(ERROR_INVALID_PARAMETER);
    return InModule(hProcess, ModBase, FALSE,
        [&](SymbolModule& module)
        {
            TypeTable& types = module.Types();
            switch (GetType)
            {
            case TI_GET_SYMTAG:
                return StoreIfKnown(types.Tag(TypeId), pInfo);
            case TI_GET_LENGTH:
                return StoreIfKnown(types.Length(TypeId), pInfo);
            case TI_GET_TYPE:
                return StoreIfKnown(types.Inner(TypeId), pInfo);
            case TI_GET_BASETYPE:
                return StoreIfKnown(types.BaseType(TypeId), pInfo);
            case TI_GET_COUNT:
                return StoreIfKnown(types.Count(TypeId), pInfo);
            }
            return FailWith(ERROR_NOT_SUPPORTED);
        });
}
