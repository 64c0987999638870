#include "stacks/debug_help_session.h"

#include "core/developer_run.h"
#include "module/late_libraries.h"
#include "module/module_paths.h"
#include "module/version_block.h"
#include "stacks/context_registers.h"
#include "stacks/frame_variables.h"

#include <cstring>
#include <iterator>
#include <new>
#include <utility>

namespace qx
{
namespace
{

constexpr int kNameSize = 1024;
constexpr DWORD kUndecorateNameOnly = 0x1000;
constexpr DWORD kSourceServerEvent = 0x40000000;
constexpr DWORD kSessionOptions = 0x10261;
constexpr int kParametersWithoutSymbol = 4;
constexpr ParameterSet kWithoutSymbol = (1 << kParametersWithoutSymbol) - 1;
constexpr wchar_t kLibraryFile[] = L"dbghelp.dll";

// Returns a variable's value, or an empty text. Values longer than a path can be (260 characters) are ignored.
String EnvironmentText(const wchar_t* name)
{
    wchar_t text[MAX_PATH];
    const DWORD length = GetEnvironmentVariableW(name, text, static_cast<DWORD>(std::size(text)));
    return length > 0 && length < std::size(text) ? String(text) : String();
}

String ApplicationFolder()
{
    const String path = ModulePath(nullptr);
    return path.Left(path.Length() - FileNameOf(path.View()).size());
}

String CurrentFolder()
{
    wchar_t text[MAX_PATH];
    const DWORD length = GetFullPathNameW(L".", static_cast<DWORD>(std::size(text)), text, nullptr);
    return length > 0 && length < std::size(text) ? String(text) : String();
}

BOOL CALLBACK OnSymbolEvent(HANDLE, ULONG event, ULONG64, ULONG64)
{
    return event == kSourceServerEvent ? TRUE : FALSE;
}

ADDRESS64 FlatAddress(std::uint64_t offset)
{
    ADDRESS64 address{};
    address.Offset = offset;
    address.Mode = AddrModeFlat;
    return address;
}

BOOL CALLBACK ReadForWalk(HANDLE, DWORD64 address, PVOID buffer, DWORD size, LPDWORD read)
{
    SIZE_T length = 0;
    const BOOL result =
        ReadProcessMemory(GetCurrentProcess(), reinterpret_cast<const void*>(address), buffer, size, &length);
    *read = static_cast<DWORD>(length);
    return result;
}

} // namespace

const char* SymbolTypeText(int type)
{
    static constexpr const char* kTexts[] = {
        "<no known symbols>", "COFF", "CV", "PDB", "<exported>", "<deferred>", "SYM", "DIA", "Virtual"};
    return type >= 0 && type < static_cast<int>(std::size(kTexts)) ? kTexts[type] : "-unknown-";
}

bool clsRGDBGHELP::Load()
{
    clsCriticalSectionLock lock(_lock);
    if (_module)
        return true;
    HMODULE module = LoadLibraryW(ApplicationFolder() + kLibraryFile);
    const String programs = EnvironmentText(L"ProgramFiles");
    for (const wchar_t* const folder : {L"\\Debugging Tools for Windows\\", L"\\Debugging Tools for Windows (x86)\\",
             L"\\Debugging Tools for Windows 64-Bit\\"})
    {
        if (module || programs.IsEmpty())
            break;
        const String path = programs + folder + kLibraryFile;
        if (GetFileAttributesW(path) != INVALID_FILE_ATTRIBUTES)
            module = LoadLibraryW(path);
    }
    if (!module)
        module = LoadLibraryW(kLibraryFile);
    return FinishLoad(module, module ? 0 : GetLastError());
}

clsDBGHELP::~clsDBGHELP()
{
    if (_isOpen && p_SymCleanup.IsThere())
        p_SymCleanup(_process);
}

String clsDBGHELP::SymbolPath() const
{
    String path(L".");
    const auto add = [&path](const String& part)
    {
        if (!part.IsEmpty())
            path.AppendWithSeparator(L';', part);
    };
    add(CurrentFolder());
    add(ApplicationFolder());
    add(EnvironmentText(L"_NT_SYMBOL_PATH"));
    add(EnvironmentText(L"_NT_ALTERNATE_SYMBOL_PATH"));
    const String root = EnvironmentText(L"SYSTEMROOT");
    add(root);
    if (!root.IsEmpty())
    {
        add(root + L"\\system32");
        add(root + L"\\syswow64");
    }
    if (UtilIsDeveloperRun())
        add(L"d:\\bin");
    return path;
}

bool clsDBGHELP::SetUp()
{
    if (!Load() || !p_SymInitialize.IsThere())
        return false;
    if ((_mode & kSetsSymbolPath) != 0)
        _symbolPath = SymbolPath();
    _isOpen = p_SymInitialize(_process, _symbolPath.IsEmpty() ? nullptr : _symbolPath.NarrowText(), FALSE) != FALSE;
    if (!_isOpen)
        return false;
    if (p_SymRegisterCallback64.IsThere())
        p_SymRegisterCallback64(_process, OnSymbolEvent, reinterpret_cast<ULONG64>(this));
    if (p_SymGetOptions.IsThere() && p_SymSetOptions.IsThere())
    {
        const DWORD lines = (_mode & kReadsNoVersions) != 0 ? SYMOPT_LOAD_LINES : 0;
        p_SymSetOptions((p_SymGetOptions() & ~static_cast<DWORD>(SYMOPT_DEFERRED_LOADS)) | lines | kSessionOptions);
    }
    return true;
}

clsDBGModuleList& clsDBGHELP::Modules()
{
    if (_modules->IsEmpty())
        AddModules();
    return *_modules;
}

void clsDBGHELP::AddModules()
{
    std::vector<LoadedModule> modules = EnumerateModules();
    if (modules.empty())
        modules = ModulesOfSnapshot();
    if (modules.empty())
        modules = ModulesOfProcess();
    try
    {
        for (const LoadedModule& module : modules)
            LoadModule(module.base, module.size);
    }
    catch (const std::bad_alloc&)
    {
        _modules.reset(new clsDBGModuleList); // discards the partial list, which would count as complete
        throw;
    }
}

// Enumerates twice, first to count the modules, so that no memory is allocated while the system enumerates.
std::vector<LoadedModule> clsDBGHELP::EnumerateModules()
{
    struct Enumeration
    {
        std::size_t count = 0;
        std::vector<LoadedModule> modules;

        static BOOL CALLBACK Count(PCSTR, DWORD64, ULONG, PVOID self)
        {
            ++static_cast<Enumeration*>(self)->count;
            return TRUE;
        }
        static BOOL CALLBACK Take(PCSTR, DWORD64 base, ULONG size, PVOID self)
        {
            auto& modules = static_cast<Enumeration*>(self)->modules;
            if (modules.size() == modules.capacity())
                return FALSE;
            modules.push_back({base, size});
            return TRUE;
        }
    };
    Enumeration enumeration;
    if (!p_EnumerateLoadedModules64.IsThere() ||
        !p_EnumerateLoadedModules64(_process, Enumeration::Count, &enumeration) || enumeration.count == 0)
        return {};
    constexpr std::size_t kSpare = 16; // for modules that are loaded in between
    enumeration.modules.reserve(enumeration.count + kSpare);
    p_EnumerateLoadedModules64(_process, Enumeration::Take, &enumeration);
    return std::move(enumeration.modules);
}

void clsDBGHELP::LoadModule(std::uint64_t base, std::uint32_t size)
{
    const String path = ModulePath(reinterpret_cast<HMODULE>(base));
    const String name(FileNameOf(path.View()));
    auto item = std::make_unique<DBGModuleItem>();
    item->size = sizeof *item;
    item->base = base;
    item->imageSize = size;
    CopyToField(path.NarrowText(), item->path);
    CopyToField(name.NarrowText(), item->name);
    IMAGEHLP_MODULE64 info{};
    info.SizeOfStruct = sizeof info;
    if (p_SymLoadModuleEx.IsThere())
        p_SymLoadModuleEx(_process, nullptr, path.IsEmpty() ? nullptr : path.NarrowText(),
            name.IsEmpty() ? nullptr : name.NarrowText(), base, size, nullptr, 0);
    if (p_SymGetModuleInfo64.IsThere() && p_SymGetModuleInfo64(_process, base, &info))
    {
        CopyToField(SymbolTypeText(info.SymType), item->symbolType);
        if (path.IsEmpty())
        {
            CopyToField(info.ImageName, item->path);
            CopyToField(info.ModuleName, item->name);
        }
    }
    if ((_mode & kReadsNoVersions) == 0 && !path.IsEmpty())
    {
        String description;
        String company;
        CopyToField(GetFileVersionText(path, &description, &company).NarrowText(), item->version);
        CopyToField(description.NarrowText(), item->description);
        CopyToField(company.NarrowText(), item->company);
    }
    _modules->InsertByBase(std::move(item));
}

bool clsDBGHELP::LoadModuleOf(std::uint64_t address)
{
    if (!p_SymLoadModule64.IsThere())
        return false;
    std::uint64_t base = p_SymGetModuleBase64.IsThere() ? p_SymGetModuleBase64(_process, address) : 0;
    MEMORY_BASIC_INFORMATION region{};
    if (base == 0 && VirtualQuery(reinterpret_cast<const void*>(address), &region, sizeof region) != 0)
        base = reinterpret_cast<std::uint64_t>(region.AllocationBase);
    if (base == 0)
        return false;
    const ModuleFacts facts = FactsOfModule(base);
    return !facts.path.IsEmpty() &&
           p_SymLoadModule64(_process, nullptr, facts.path.NarrowText(),
               facts.name.IsEmpty() ? nullptr : facts.name.NarrowText(), base, facts.size) != 0;
}

bool clsDBGHELP::FindModuleOf(std::uint64_t address, IMAGEHLP_MODULE64& info)
{
    if (!p_SymGetModuleInfo64.IsThere())
        return false;
    info = {};
    info.SizeOfStruct = sizeof info;
    if (p_SymGetModuleInfo64(_process, address, &info))
        return true;
    if (GetLastError() != ERROR_MOD_NOT_FOUND || !LoadModuleOf(address))
        return false;
    info = {};
    info.SizeOfStruct = sizeof info;
    return p_SymGetModuleInfo64(_process, address, &info) != FALSE;
}

clsDBGHELP* clsDBGHELP::_walking = nullptr;

// Loads the module first, because the unwinder of some systems finds only modules that the session has loaded.
DWORD64 CALLBACK clsDBGHELP::BaseForWalk(HANDLE process, DWORD64 address)
{
    clsDBGHELP& session = *_walking;
    if (!session.p_SymGetModuleBase64.IsThere())
        return 0;
    const DWORD64 base = session.p_SymGetModuleBase64(process, address);
    return base == 0 && session.LoadModuleOf(address) ? session.p_SymGetModuleBase64(process, address) : base;
}

PVOID CALLBACK clsDBGHELP::TableForWalk(HANDLE process, DWORD64 address)
{
    clsDBGHELP& session = *_walking;
    if (!session.p_SymFunctionTableAccess64.IsThere())
        return nullptr;
    BaseForWalk(process, address);
    return session.p_SymFunctionTableAccess64(process, address);
}

StackTraceListPtr clsDBGHELP::Walk(const CONTEXT& context, int maximum, unsigned detail)
{
    StackTraceListPtr list(new clsDBGStackTraceList);
    if (!p_StackWalk64.IsThere())
        return list;
    CONTEXT registers = context;
    STACKFRAME64 frame{};
    frame.AddrPC = FlatAddress(ProgramCounterOf(registers));
    frame.AddrFrame = frame.AddrStack = FlatAddress(StackPointerOf(registers));
    _walking = this;
    for (int index = 0; index < maximum && frame.AddrPC.Offset != 0; ++index)
    {
        frame.AddrBStore.Offset = 0;
        if (!p_StackWalk64(MachineOf<CONTEXT>(), _process, GetCurrentThread(), &frame, &registers, ReadForWalk,
                TableForWalk, BaseForWalk, nullptr) ||
            frame.AddrPC.Offset == 0)
            break;
        const bool isExact = index == 0 || frame.AddrBStore.Offset != 0;
        auto item = std::make_unique<DBGStackTraceItem>();
        const ParameterSet unknown = Describe(*item, frame.AddrPC.Offset, isExact, frame.AddrFrame.Offset, detail);
        if ((detail & kParameters) != 0 && item->parameterCount > 0 && frame.AddrReturn.Offset != 0)
            AddFrameWords(*item, unknown, frame.Params);
        const bool isFull = item->addressOnly == 0;
        list->Append(std::move(item));
        if (isFull && frame.AddrReturn.Offset == 0)
            break;
    }
    list->Reset();
    return list;
}

// Looks up a return address one byte earlier, because the call may be the last instruction of its function.
ParameterSet clsDBGHELP::Describe(
    DBGStackTraceItem& item, std::uint64_t address, bool isExact, std::uint64_t frameBase, unsigned detail)
{
    item = {};
    item.size = sizeof item;
    item.address = address;
    if ((detail & (kSymbolAndLine | kParameters)) == 0)
    {
        item.addressOnly = 1;
        MEMORY_BASIC_INFORMATION region{};
        if (VirtualQuery(reinterpret_cast<const void*>(address), &region, sizeof region) != 0 && region.AllocationBase)
            CopyToField(ModulePath(static_cast<HMODULE>(region.AllocationBase)).NarrowText(), item.module);
        return 0;
    }
    item.parameterCount = kParametersWithoutSymbol;
    const std::uint64_t lookedUp = isExact ? address : address - 1;
    IMAGEHLP_MODULE64 info{};
    const bool hasModule = FindModuleOf(lookedUp, info); // loads the module if necessary, so that the symbol is found
    ParameterSet unknown = kWithoutSymbol;
    if ((detail & kSymbolAndLine) != 0)
        unknown = DescribeSymbol(item, lookedUp, frameBase);
    if ((detail & kModule) != 0 && hasModule)
    {
        CopyToField(SymbolTypeText(info.SymType), item.symbolType);
        CopyToField(info.ModuleName, item.module);
        item.moduleBase = info.BaseOfImage;
    }
    return unknown;
}

ParameterSet clsDBGHELP::DescribeSymbol(DBGStackTraceItem& item, std::uint64_t lookedUp, std::uint64_t frameBase)
{
    ParameterSet unknown = kWithoutSymbol;
    alignas(IMAGEHLP_SYMBOL64) char storage[sizeof(IMAGEHLP_SYMBOL64) + kNameSize] = {};
    auto& symbol = *reinterpret_cast<IMAGEHLP_SYMBOL64*>(storage);
    symbol.SizeOfStruct = sizeof symbol;
    symbol.MaxNameLength = kNameSize;
    DWORD64 displacement = 0;
    const std::uint64_t correction = item.address - lookedUp;
    if (p_SymGetSymFromAddr64.IsThere() && p_SymGetSymFromAddr64(_process, lookedUp, &displacement, &symbol))
    {
        CopyToField(symbol.Name, item.symbol);
        item.displacement = displacement + correction;
        if (p_UnDecorateSymbolName.IsThere())
        {
            p_UnDecorateSymbolName(symbol.Name, item.name, kNameSize, kUndecorateNameOnly);
            p_UnDecorateSymbolName(symbol.Name, item.fullName, kNameSize, 0);
        }
        IMAGEHLP_STACK_FRAME frame{};
        frame.InstructionOffset = lookedUp;
        if (frameBase != 0 && p_SymSetContext.IsThere() && p_SymEnumSymbols.IsThere() &&
            (p_SymSetContext(_process, &frame, nullptr) || GetLastError() == ERROR_SUCCESS))
        {
            item.parameterCount = 0;
            unknown = VariableReader(*this, item, frameBase).Read();
        }
    }
    IMAGEHLP_LINE64 line{};
    line.SizeOfStruct = sizeof line;
    DWORD lineDisplacement = 0;
    if (p_SymGetLineFromAddr64.IsThere() && p_SymGetLineFromAddr64(_process, lookedUp, &lineDisplacement, &line))
    {
        CopyToField(line.FileName ? line.FileName : "", item.file);
        item.line = line.LineNumber;
        item.lineDisplacement = lineDisplacement + static_cast<std::uint32_t>(correction);
    }
    return unknown;
}

} // namespace qx
