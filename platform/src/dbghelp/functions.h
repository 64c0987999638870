// The compile units and functions of a module's debug information, by address.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include <elfutils/libdw.h>

namespace qxplatform
{

struct DieRange
{
    Dwarf_Addr begin = 0;
    Dwarf_Addr end = 0;
    Dwarf_Die die = {};
};

// Entries with address ranges, which may be nested. Addresses are those of the debug information.
class DieRanges
{
public:
    // Adds each range of the entry.
    void Add(Dwarf_Die die);
    // Call this after the last Add.
    void Sort();
    // Returns the entry with the innermost range around an address, or null.
    const Dwarf_Die* Find(Dwarf_Addr address) const;

private:
    struct Entry : DieRange
    {
        Dwarf_Addr reach = 0; // the highest end among this range and all ranges before it
    };

    std::vector<Entry> _entries;
};

class CompileUnits
{
public:
    // Reads the address ranges of all compile units.
    void Read(Dwarf* dwarf);

    // Returns the compile unit that contains an address, or null.
    const Dwarf_Die* Find(Dwarf_Addr address) const { return _units.Find(address); }

    // Returns the function that contains an address, ignoring inlined functions.
    std::optional<Dwarf_Die> FindFunction(Dwarf_Addr address);

private:
    struct Functions
    {
        Dwarf_Off unit = 0;
        DieRanges ranges;
    };

    DieRanges _units;
    std::vector<Functions> _functions; // one element for each unit that has been searched
};

} // namespace qxplatform
