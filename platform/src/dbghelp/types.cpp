#include "dbghelp/types.h"

#include <dbghelp.h>

#include <cstring>

#include <dwarf.h>

namespace qxplatform
{
namespace
{

constexpr std::uint32_t kFirstId = TypeTable::kVoid + 1;

constexpr std::uint32_t kBaseVoid = 1;
constexpr std::uint32_t kBaseChar = 2;
constexpr std::uint32_t kBaseWideChar = 3;
constexpr std::uint32_t kBaseInt = 6;
constexpr std::uint32_t kBaseUnsigned = 7;
constexpr std::uint32_t kBaseFloat = 8;
constexpr std::uint32_t kBaseBool = 10;
constexpr std::uint32_t kBaseComplex = 28;

// Follows an attribute that refers to a type, through qualifiers and typedefs. Empty for void.
std::optional<Dwarf_Die> ReferredType(Dwarf_Die& die)
{
    Dwarf_Attribute attribute;
    Dwarf_Die type;
    Dwarf_Die peeled;
    if (dwarf_attr_integrate(&die, DW_AT_type, &attribute) == nullptr ||
        dwarf_formref_die(&attribute, &type) == nullptr || dwarf_peel_type(&type, &peeled) != 0)
        return std::nullopt;
    // If the underlying type is void, the result is still a typedef or a qualifier.
    switch (dwarf_tag(&peeled))
    {
    case DW_TAG_typedef:
    case DW_TAG_const_type:
    case DW_TAG_volatile_type:
        return std::nullopt;
    default:
        return peeled;
    }
}

std::uint32_t CharacterOfSize(int size, std::uint32_t other)
{
    return size == 1 ? kBaseChar : size == 2 ? kBaseWideChar : other;
}

std::optional<std::uint32_t> BaseTypeOf(Dwarf_Die& die)
{
    Dwarf_Attribute attribute;
    Dwarf_Word encoding = 0;
    if (dwarf_formudata(dwarf_attr_integrate(&die, DW_AT_encoding, &attribute), &encoding) != 0)
        return std::nullopt;
    const int size = dwarf_bytesize(&die);
    const char* const name = dwarf_diename(&die);
    const bool isWide = name != nullptr && std::strcmp(name, "wchar_t") == 0;
    switch (encoding)
    {
    case DW_ATE_boolean:
        return kBaseBool;
    case DW_ATE_float:
        return kBaseFloat;
    case DW_ATE_complex_float:
        return kBaseComplex;
    case DW_ATE_signed:
        return isWide ? CharacterOfSize(size, kBaseInt) : kBaseInt;
    case DW_ATE_unsigned:
        return isWide ? CharacterOfSize(size, kBaseInt) : kBaseUnsigned;
    case DW_ATE_signed_char:
    case DW_ATE_unsigned_char:
    case DW_ATE_UTF:
        return CharacterOfSize(size, kBaseUnsigned);
    default:
        return std::nullopt;
    }
}

} // namespace

std::optional<Dwarf_Die> TypeTable::Get(std::uint32_t id) const
{
    if (id < kFirstId || id - kFirstId >= _types.size())
        return std::nullopt;
    return _types[id - kFirstId];
}

std::uint32_t TypeTable::TypeOf(Dwarf_Die& die)
{
    const std::optional<Dwarf_Die> type = ReferredType(die);
    if (!type)
        return kVoid;
    const auto [entry, isNew] = _ids.try_emplace(type->addr, kFirstId + static_cast<std::uint32_t>(_types.size()));
    if (isNew)
        _types.push_back(*type);
    return entry->second;
}

std::optional<std::uint32_t> TypeTable::Tag(std::uint32_t id) const
{
    std::optional<Dwarf_Die> die = Get(id);
    if (!die)
        return id == kVoid ? std::optional<std::uint32_t>(SymTagBaseType) : std::nullopt;
    switch (dwarf_tag(&*die))
    {
    case DW_TAG_base_type:
    case DW_TAG_unspecified_type:
        return SymTagBaseType;
    case DW_TAG_pointer_type:
    case DW_TAG_reference_type:
    case DW_TAG_rvalue_reference_type:
    case DW_TAG_ptr_to_member_type:
        return SymTagPointerType;
    case DW_TAG_array_type:
        return SymTagArrayType;
    case DW_TAG_structure_type:
    case DW_TAG_class_type:
    case DW_TAG_union_type:
        return SymTagUDT;
    case DW_TAG_enumeration_type:
        return SymTagEnum;
    case DW_TAG_subroutine_type:
        return SymTagFunctionType;
    default:
        return std::nullopt;
    }
}

std::optional<std::uint64_t> TypeTable::Length(std::uint32_t id) const
{
    std::optional<Dwarf_Die> die = Get(id);
    Dwarf_Word size = 0;
    if (!die || dwarf_aggregate_size(&*die, &size) != 0)
        return std::nullopt;
    return size;
}

std::optional<std::uint32_t> TypeTable::BaseType(std::uint32_t id) const
{
    std::optional<Dwarf_Die> die = Get(id);
    if (!die)
        return id == kVoid ? std::optional(kBaseVoid) : std::nullopt;
    switch (dwarf_tag(&*die))
    {
    case DW_TAG_base_type:
        return BaseTypeOf(*die);
    case DW_TAG_unspecified_type:
        return kBaseVoid;
    case DW_TAG_enumeration_type:
        if (std::optional<Dwarf_Die> base = ReferredType(*die))
            return BaseTypeOf(*base);
        return kBaseInt;
    default:
        return std::nullopt;
    }
}

std::optional<std::uint32_t> TypeTable::Inner(std::uint32_t id)
{
    std::optional<Dwarf_Die> die = Get(id);
    switch (die ? dwarf_tag(&*die) : DW_TAG_invalid)
    {
    case DW_TAG_pointer_type:
    case DW_TAG_reference_type:
    case DW_TAG_rvalue_reference_type:
    case DW_TAG_array_type:
    case DW_TAG_enumeration_type:
        return TypeOf(*die);
    default:
        return std::nullopt;
    }
}

std::optional<std::uint32_t> TypeTable::Count(std::uint32_t id) const
{
    std::optional<Dwarf_Die> die = Get(id);
    if (!die || dwarf_tag(&*die) != DW_TAG_array_type)
        return std::nullopt;
    Dwarf_Die element;
    Dwarf_Attribute attribute;
    Dwarf_Die type;
    Dwarf_Word size = 0;
    Dwarf_Word elementSize = 0;
    if (dwarf_aggregate_size(&*die, &size) != 0 ||
        dwarf_formref_die(dwarf_attr_integrate(&*die, DW_AT_type, &attribute), &type) == nullptr ||
        dwarf_peel_type(&type, &element) != 0 || dwarf_aggregate_size(&element, &elementSize) != 0 || elementSize == 0)
        return std::nullopt;
    return static_cast<std::uint32_t>(size / elementSize);
}

} // namespace qxplatform
