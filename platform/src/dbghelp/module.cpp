#include "dbghelp/module.h"

#include "dbghelp/debug_files.h"

#include <cstring>
#include <utility>

#include <dwarf.h>
#include <elfutils/libdwelf.h>
#include <fcntl.h>
#include <unistd.h>

namespace qxplatform
{
namespace
{

SYM_TYPE TypeOfHeaders(const ElfHeaders& headers, SYM_TYPE otherwise)
{
    return headers.hasDebugInfo        ? SymDia
           : headers.hasSymbolTable    ? SymSym
           : headers.hasDynamicSymbols ? SymExport
                                       : otherwise;
}

} // namespace

SymbolModule::SymbolModule(Origin origin, std::vector<std::string> debugFolders)
    : _origin(std::move(origin)),
      _debugFolders(std::move(debugFolders))
{
    if (_origin.isInMemory)
    {
        const ElfImage image(reinterpret_cast<const void*>(_origin.base), _origin.size);
        _headers = ReadElfHeaders(image.Get());
    }
    else
    {
        const ElfImage image(_origin.path);
        _headers = ReadElfHeaders(image.Get());
    }
    if (_origin.size == 0)
        _origin.size = _headers.size;
    if (_origin.base == 0)
        _origin.base = _headers.firstAddress;
    _type = TypeOfHeaders(_headers, SymNone);
    if (!_headers.isImage || _headers.hasDebugInfo || _origin.isInMemory)
        return;
    _debugPath = FindDebugFile(_origin.path, _headers, _debugFolders);
    if (!_debugPath.empty())
    {
        const ElfImage image(_debugPath);
        _type = TypeOfHeaders(ReadElfHeaders(image.Get()), _type);
    }
}

SymbolModule::~SymbolModule()
{
    if (_dwfl != nullptr)
        dwfl_end(_dwfl);
    if (_sharedDwarf != nullptr)
        dwarf_end(_sharedDwarf);
    if (_sharedFile >= 0)
        close(_sharedFile);
}

// libdw finds files only through the callbacks below. Its own search, which may contact servers, is never used.
int SymbolModule::FindElf(Dwfl_Module*, void** user, const char*, Dwarf_Addr, char** path, Elf** elf)
{
    const auto& self = *static_cast<const SymbolModule*>(*user);
    if (self._origin.isInMemory)
    {
        ElfImage image(reinterpret_cast<const void*>(self._origin.base), self._origin.size);
        *elf = image.TakeImage();
        return -1;
    }
    ElfImage image(self._origin.path);
    *path = strdup(self._origin.path.c_str());
    return image.TakeFile();
}

int SymbolModule::FindDebugInfo(
    Dwfl_Module*, void** user, const char*, Dwarf_Addr, const char*, const char*, GElf_Word, char** found)
{
    const auto& self = *static_cast<const SymbolModule*>(*user);
    // SetSharedDebugFile looks for the file with the debug information that several files share.
    if (self._debugPath.empty() || self._dwarf != nullptr)
        return -1;
    ElfImage image(self._debugPath);
    *found = strdup(self._debugPath.c_str());
    return image.TakeFile();
}

void SymbolModule::ReadSymbols()
{
    if (std::exchange(_hasSymbols, true) || !IsImage())
        return;
    static constexpr Dwfl_Callbacks kCallbacks = {
        .find_elf = FindElf,
        .find_debuginfo = FindDebugInfo,
        .section_address = dwfl_offline_section_address,
        .debuginfo_path = nullptr,
    };
    _dwfl = dwfl_begin(&kCallbacks);
    if (_dwfl == nullptr)
        return;
    dwfl_report_begin(_dwfl);
    _module = dwfl_report_module(_dwfl, _origin.name.c_str(), Base(), Base() + Size());
    if (_module != nullptr)
    {
        void** user = nullptr;
        dwfl_module_info(_module, &user, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
        *user = this;
    }
    dwfl_report_end(_dwfl, nullptr, nullptr);
    if (_module != nullptr)
        _symbols.Read(_module);
}

void SymbolModule::ReadDebugInfo()
{
    ReadSymbols();
    if (std::exchange(_hasDebugInfo, true) || _module == nullptr || _type != SymDia)
        return;
    _dwarf = dwfl_module_getdwarf(_module, &_bias);
    if (_dwarf == nullptr)
        return;
    SetSharedDebugFile();
    _units.Read(_dwarf);
}

void SymbolModule::SetSharedDebugFile()
{
    const char* name = nullptr;
    const void* id = nullptr;
    const ssize_t length = dwelf_dwarf_gnu_debugaltlink(_dwarf, &name, &id);
    if (length <= 0)
        return;
    const std::string path = FindSharedDebugFile(_debugPath.empty() ? _origin.path : _debugPath, name,
        {static_cast<const char*>(id), static_cast<std::size_t>(length)}, _debugFolders);
    if (path.empty())
        return;
    ElfImage image(path);
    _sharedFile = image.TakeFile();
    _sharedDwarf = dwarf_begin(_sharedFile, DWARF_C_READ);
    if (_sharedDwarf != nullptr)
        dwarf_setalt(_dwarf, _sharedDwarf);
}

std::optional<SymbolPlace> SymbolModule::FindSymbol(std::uint64_t address)
{
    ReadSymbols();
    if (const TableSymbol* const symbol = _symbols.Find(address))
        return SymbolPlace{symbol->name, symbol->address, symbol->end - symbol->address};
    std::optional<Dwarf_Die> function = FindFunction(address);
    if (!function)
        return std::nullopt;
    Dwarf_Attribute attribute;
    const char* name = dwarf_formstring(dwarf_attr_integrate(&*function, DW_AT_linkage_name, &attribute));
    if (name == nullptr)
        name = dwarf_diename(&*function);
    Dwarf_Addr begin = 0;
    Dwarf_Addr end = 0;
    if (name == nullptr || dwarf_lowpc(&*function, &begin) != 0 || dwarf_highpc(&*function, &end) != 0)
        return std::nullopt;
    return SymbolPlace{name, begin + _bias, end - begin};
}

std::optional<SourceLine> SymbolModule::FindLine(std::uint64_t address)
{
    ReadDebugInfo();
    const Dwarf_Die* const found = _units.Find(address - _bias);
    if (found == nullptr)
        return std::nullopt;
    Dwarf_Die unit = *found;
    Dwarf_Line* const line = dwarf_getsrc_die(&unit, address - _bias);
    int number = 0;
    Dwarf_Addr begin = 0;
    const char* const file = line == nullptr ? nullptr : dwarf_linesrc(line, nullptr, nullptr);
    if (file == nullptr || dwarf_lineno(line, &number) != 0 || number == 0 || dwarf_lineaddr(line, &begin) != 0)
        return std::nullopt;
    return SourceLine{file, static_cast<unsigned>(number), begin + _bias};
}

std::optional<Dwarf_Die> SymbolModule::FindFunction(std::uint64_t address)
{
    ReadDebugInfo();
    return _units.FindFunction(address - _bias);
}

Dwarf_Frame* SymbolModule::FrameRules(std::uint64_t address)
{
    ReadSymbols();
    Dwarf_Frame* rules = nullptr;
    Dwarf_Addr bias = 0;
    for (const auto tables : {&dwfl_module_eh_cfi, &dwfl_module_dwarf_cfi})
        if (Dwarf_CFI* const table = tables(_module, &bias))
            if (dwarf_cfi_addrframe(table, address - bias, &rules) == 0)
                return rules;
    return nullptr;
}

} // namespace qxplatform
