#include "dbghelp/symbol_table.h"

#include <algorithm>
#include <utility>

namespace qxplatform
{
namespace
{

bool IsNamedPlace(const GElf_Sym& symbol, GElf_Word section, const char* name)
{
    if (section == SHN_UNDEF || section == SHN_ABS || name == nullptr || *name == 0)
        return false;
    switch (GELF_ST_TYPE(symbol.st_info))
    {
    case STT_FUNC:
    case STT_GNU_IFUNC:
    case STT_OBJECT:
        return true;
    case STT_NOTYPE:
        return *name != '$'; // marks the kind of code on some processors
    default:
        return false;
    }
}

std::uint8_t RankOf(const GElf_Sym& symbol)
{
    const unsigned type = GELF_ST_TYPE(symbol.st_info);
    const unsigned binding = GELF_ST_BIND(symbol.st_info);
    const int ofType = type == STT_FUNC || type == STT_GNU_IFUNC ? 8 : 0;
    const int ofBinding = binding == STB_GLOBAL ? 2 : binding == STB_WEAK ? 1 : 0;
    return static_cast<std::uint8_t>(ofType + ofBinding);
}

// Returns the end of the symbol's section, or the symbol's own address if there is no such section.
std::uint64_t SectionEnd(Elf* elf, GElf_Word section, GElf_Addr address, GElf_Addr bias)
{
    GElf_Shdr header;
    if (gelf_getshdr(elf_getscn(elf, section), &header) == nullptr)
        return address;
    const std::uint64_t end = header.sh_addr + header.sh_size + bias;
    return address >= header.sh_addr + bias && address < end ? end : address;
}

} // namespace

void SymbolTable::Read(Dwfl_Module* module)
{
    const int count = dwfl_module_getsymtab(module);
    if (count <= 0)
        return;
    _symbols.reserve(static_cast<std::size_t>(count));
    for (int index = 1; index < count; ++index)
    {
        GElf_Sym symbol;
        GElf_Addr address = 0;
        GElf_Word section = SHN_UNDEF;
        Elf* elf = nullptr;
        Dwarf_Addr bias = 0;
        const char* const name = dwfl_module_getsym_info(module, index, &symbol, &address, &section, &elf, &bias);
        if (!IsNamedPlace(symbol, section, name))
            continue;
        const bool hasSize = symbol.st_size != 0;
        const std::uint64_t end = hasSize ? address + symbol.st_size : SectionEnd(elf, section, address, bias);
        if (end > address)
            _symbols.push_back({address, end, name, 0, hasSize, RankOf(symbol)});
    }
    std::sort(_symbols.begin(), _symbols.end(),
        [](const TableSymbol& a, const TableSymbol& b) {
            return a.address != b.address   ? a.address < b.address
                   : a.hasSize != b.hasSize ? b.hasSize
                                            : a.rank < b.rank;
        });
    std::uint64_t next = UINT64_MAX; // the next higher address of a symbol
    std::uint64_t last = UINT64_MAX;
    for (auto symbol = _symbols.rbegin(); symbol != _symbols.rend(); ++symbol)
    {
        if (symbol->address != last)
            next = std::exchange(last, symbol->address);
        if (!symbol->hasSize)
            symbol->end = std::min(symbol->end, next);
    }
    std::uint64_t reach = 0;
    for (TableSymbol& symbol : _symbols)
        symbol.reach = reach = std::max(reach, symbol.end);
}

const TableSymbol* SymbolTable::Find(std::uint64_t address) const
{
    auto place = std::upper_bound(_symbols.begin(), _symbols.end(), address,
        [](std::uint64_t value, const TableSymbol& symbol) { return value < symbol.address; });
    const TableSymbol* label = nullptr;
    while (place != _symbols.begin() && (--place)->reach > address)
    {
        if (place->end <= address)
            continue;
        if (place->hasSize)
            return &*place;
        if (label == nullptr)
            label = &*place;
    }
    return label;
}

} // namespace qxplatform
