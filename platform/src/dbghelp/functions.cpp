#include "dbghelp/functions.h"

#include <algorithm>
#include <cstddef>

#include <dwarf.h>

namespace qxplatform
{
namespace
{

// Deeper nesting occurs only in damaged files.
constexpr int kDeepestNesting = 100;

bool MayContainFunctions(int tag)
{
    switch (tag)
    {
    case DW_TAG_namespace:
    case DW_TAG_module:
    case DW_TAG_class_type:
    case DW_TAG_structure_type:
    case DW_TAG_union_type:
    case DW_TAG_subprogram:
    case DW_TAG_lexical_block:
        return true;
    default:
        return false;
    }
}

void AddFunctions(Dwarf_Die parent, DieRanges& ranges, int depth)
{
    Dwarf_Die die;
    if (depth > kDeepestNesting || dwarf_child(&parent, &die) != 0)
        return;
    do
    {
        const int tag = dwarf_tag(&die);
        if (tag == DW_TAG_subprogram)
            ranges.Add(die);
        if (MayContainFunctions(tag))
            AddFunctions(die, ranges, depth + 1);
    } while (dwarf_siblingof(&die, &die) == 0);
}

} // namespace

void DieRanges::Add(Dwarf_Die die)
{
    Dwarf_Addr base = 0;
    Entry entry;
    entry.die = die;
    for (std::ptrdiff_t offset = 0; (offset = dwarf_ranges(&die, offset, &base, &entry.begin, &entry.end)) > 0;)
        if (entry.begin < entry.end)
            _entries.push_back(entry);
}

void DieRanges::Sort()
{
    std::sort(_entries.begin(), _entries.end(),
        [](const Entry& a, const Entry& b) { return a.begin != b.begin ? a.begin < b.begin : a.end > b.end; });
    Dwarf_Addr reach = 0;
    for (Entry& entry : _entries)
        entry.reach = reach = std::max(reach, entry.end);
}

const Dwarf_Die* DieRanges::Find(Dwarf_Addr address) const
{
    auto place = std::upper_bound(_entries.begin(), _entries.end(), address,
        [](Dwarf_Addr value, const Entry& entry) { return value < entry.begin; });
    while (place != _entries.begin() && (--place)->reach > address)
        if (place->end > address)
            return &place->die;
    return nullptr;
}

void CompileUnits::Read(Dwarf* dwarf)
{
    Dwarf_CU* unit = nullptr;
    Dwarf_Die die;
    std::uint8_t type = 0;
    while (dwarf_get_units(dwarf, unit, &unit, nullptr, &type, &die, nullptr) == 0)
        if (type == DW_UT_compile || type == DW_UT_skeleton)
            _units.Add(die);
    _units.Sort();
}

std::optional<Dwarf_Die> CompileUnits::FindFunction(Dwarf_Addr address)
{
    const Dwarf_Die* const unit = Find(address);
    if (unit == nullptr)
        return std::nullopt;
    Dwarf_Die root = *unit;
    const Dwarf_Off offset = dwarf_dieoffset(&root);
    auto known = std::find_if(
        _functions.begin(), _functions.end(), [offset](const Functions& entry) { return entry.unit == offset; });
    if (known == _functions.end())
    {
        // If a unit is split, its functions are in another file.
        Dwarf_Die split;
        std::uint8_t type = 0;
        if (dwarf_cu_info(root.cu, nullptr, &type, nullptr, &split, nullptr, nullptr, nullptr) == 0 &&
            type == DW_UT_skeleton && dwarf_tag(&split) == DW_TAG_compile_unit)
            root = split;
        known = _functions.emplace(_functions.end());
        known->unit = offset;
        AddFunctions(root, known->ranges, 0);
        known->ranges.Sort();
    }
    const Dwarf_Die* const function = known->ranges.Find(address);
    return function == nullptr ? std::nullopt : std::optional(*function);
}

} // namespace qxplatform
