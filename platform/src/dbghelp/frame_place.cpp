#include "dbghelp/frame_place.h"

#include <cstddef>

#include <dwarf.h>

namespace qxplatform
{
namespace
{

// The DWARF expression of an attribute, as valid at an instruction.
struct Expression
{
    Expression(Dwarf_Die& die, unsigned name, Dwarf_Addr address)
    {
        Dwarf_Op* found = nullptr;
        std::size_t length = 0;
        if (dwarf_attr_integrate(&die, name, &attribute) != nullptr &&
            dwarf_getlocation_addr(&attribute, address, &found, &length, 1) == 1)
        {
            operations = found;
            count = length;
        }
    }

    Dwarf_Attribute attribute = {};
    const Dwarf_Op* operations = nullptr;
    std::size_t count = 0;
};

// The register and the displacement of an operation that refers to a register.
struct RegisterOperand
{
    unsigned number = 0;
    std::int64_t displacement = 0;
};

std::optional<RegisterOperand> BasedOnRegister(const Dwarf_Op& operation)
{
    if (operation.atom >= DW_OP_breg0 && operation.atom <= DW_OP_breg31)
        return RegisterOperand{
            static_cast<unsigned>(operation.atom - DW_OP_breg0), static_cast<std::int64_t>(operation.number)};
    if (operation.atom == DW_OP_bregx)
        return RegisterOperand{static_cast<unsigned>(operation.number), static_cast<std::int64_t>(operation.number2)};
    return std::nullopt;
}

// Returns the register relative to the canonical frame address, or nothing if the unwind rules define it otherwise.
std::optional<std::int64_t> RegisterInFrame(unsigned number, Dwarf_Frame* rules)
{
    Dwarf_Op* operations = nullptr;
    std::size_t count = 0;
    if (rules == nullptr || dwarf_frame_cfa(rules, &operations, &count) != 0 || count != 1)
        return std::nullopt;
    const std::optional<RegisterOperand> base = BasedOnRegister(operations[0]);
    if (!base || base->number != number)
        return std::nullopt;
    return static_cast<std::int64_t>(0 - static_cast<std::uint64_t>(base->displacement));
}

// Returns the frame base of the function relative to the canonical frame address.
std::optional<std::int64_t> FrameBase(Dwarf_Die& function, Dwarf_Addr address, Dwarf_Frame* rules)
{
    const Expression expression(function, DW_AT_frame_base, address);
    if (expression.count != 1)
        return std::nullopt;
    const Dwarf_Op& operation = expression.operations[0];
    if (operation.atom == DW_OP_call_frame_cfa)
        return 0;
    if (operation.atom >= DW_OP_reg0 && operation.atom <= DW_OP_reg31)
        return RegisterInFrame(operation.atom - DW_OP_reg0, rules);
    const std::optional<RegisterOperand> based = BasedOnRegister(operation);
    const std::optional<std::int64_t> base = based ? RegisterInFrame(based->number, rules) : std::nullopt;
    return base ? std::optional(WrappingSum(*base, based->displacement)) : std::nullopt;
}

std::optional<FramePlace> FirstOperand(
    Expression& expression, Dwarf_Die& function, Dwarf_Addr address, Dwarf_Frame* rules)
{
    const Dwarf_Op& operation = expression.operations[0];
    if (operation.atom == DW_OP_fbreg)
    {
        const std::optional<std::int64_t> base = FrameBase(function, address, rules);
        return base ? std::optional(FramePlace{true, WrappingSum(*base, static_cast<std::int64_t>(operation.number))})
                    : std::nullopt;
    }
    if (const std::optional<RegisterOperand> based = BasedOnRegister(operation))
    {
        const std::optional<std::int64_t> base = RegisterInFrame(based->number, rules);
        return base ? std::optional(FramePlace{true, WrappingSum(*base, based->displacement)}) : std::nullopt;
    }
    if (operation.atom == DW_OP_addr)
        return FramePlace{false, static_cast<std::int64_t>(operation.number)};
    if (operation.atom == DW_OP_addrx)
    {
        Dwarf_Attribute attribute;
        Dwarf_Addr value = 0;
        if (dwarf_getlocation_attr(&expression.attribute, &operation, &attribute) == 0 &&
            dwarf_formaddr(&attribute, &value) == 0)
            return FramePlace{false, static_cast<std::int64_t>(value)};
    }
    return std::nullopt;
}

} // namespace

std::optional<FramePlace> PlaceOf(Dwarf_Die& variable, Dwarf_Die& function, Dwarf_Addr address, Dwarf_Frame* rules)
{
    Expression expression(variable, DW_AT_location, address);
    if (expression.count == 0)
        return std::nullopt;
    std::optional<FramePlace> place = FirstOperand(expression, function, address, rules);
    // Other operations compute values, refer to thread-local storage, or put the variable together from pieces.
    for (std::size_t index = 1; place && index < expression.count; ++index)
    {
        if (expression.operations[index].atom != DW_OP_plus_uconst)
            return std::nullopt;
        place->address = WrappingSum(place->address, static_cast<std::int64_t>(expression.operations[index].number));
    }
    return place;
}

} // namespace qxplatform
