// The symbols of a module, sorted for look-ups by address.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <elfutils/libdwfl.h>

namespace qxplatform
{

struct TableSymbol
{
    std::uint64_t address = 0;
    std::uint64_t end = 0;
    const char* name = nullptr; // the linker's name
    std::uint64_t reach = 0;    // the highest end among this symbol and all symbols before it
    bool hasSize = false;       // a label without a size extends to the next symbol or the end of its section
    std::uint8_t rank = 0;      // among symbols at the same address, the highest is the best name
};

class SymbolTable
{
public:
    // Reads all symbols. The names belong to the module.
    void Read(Dwfl_Module* module);

    // Returns the innermost symbol that contains the address, or null. Returns a label without a size only outside of
    // other symbols.
    const TableSymbol* Find(std::uint64_t address) const;

    std::size_t Count() const { return _symbols.size(); }

private:
    std::vector<TableSymbol> _symbols;
};

} // namespace qxplatform
