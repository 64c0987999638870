#include "dbghelp/debug_frame.h"

#include <cstddef>
#include <cstdlib>
#include <memory>

#include <dwarf.h>

namespace qxplatform
{
namespace
{

struct FreeFrame
{
    void operator()(Dwarf_Frame* frame) const { std::free(frame); }
};

bool SetCfa(Dwarf_Frame* frame, FrameRule::State& state)
{
    Dwarf_Op* operations = nullptr;
    std::size_t count = 0;
    if (dwarf_frame_cfa(frame, &operations, &count) != 0 || count != 1 || operations[0].atom != DW_OP_bregx ||
        operations[0].number >= kRegisterCount)
        return false;
    state.cfaHow = How::Offset;
    state.cfaRegister = static_cast<std::uint8_t>(operations[0].number);
    state.cfaOffset = static_cast<std::int64_t>(operations[0].number2);
    return true;
}

// Stores the rule of a register. Returns false if the rule is an expression of an unsupported form.
bool SetRegister(Dwarf_Frame* frame, unsigned number, FrameRule::State& state)
{
    Dwarf_Op storage[3];
    Dwarf_Op* operations = nullptr;
    std::size_t count = 0;
    if (dwarf_frame_register(frame, static_cast<int>(number), storage, &operations, &count) != 0)
        return false;
    const auto set = [&](How how, std::int64_t value)
    {
        state.how[number] = how;
        state.value[number] = value;
    };
    if (count == 0)
    {
        set(operations == nullptr ? How::Undefined : How::Same, 0);
        return true;
    }
    if (operations[0].atom == DW_OP_regx && count == 1)
    {
        set(How::InRegister, static_cast<std::int64_t>(operations[0].number));
        return true;
    }
    // The other supported form is the canonical frame address, plus an offset unless it is 0. A final DW_OP_stack_value
    // means that the sum is the value itself, not its address.
    const bool isValue = operations[count - 1].atom == DW_OP_stack_value;
    const std::size_t length = count - (isValue ? 1 : 0);
    if (operations[0].atom != DW_OP_call_frame_cfa || length > 2 ||
        (length == 2 && operations[1].atom != DW_OP_plus_uconst))
        return false;
    set(isValue ? How::Offset : How::AtOffset, length == 2 ? static_cast<std::int64_t>(operations[1].number) : 0);
    return true;
}

} // namespace

bool FindDebugFrameRule(SymbolModule& module, std::uint64_t address, FrameRule& rule)
{
    const std::unique_ptr<Dwarf_Frame, FreeFrame> frame(module.FrameRules(address));
    if (!frame)
        return false;
    rule = {};
    const int returnColumn = dwarf_frame_info(frame.get(), nullptr, nullptr, &rule.isSignalFrame);
    if (returnColumn < 0 || returnColumn >= static_cast<int>(kRegisterCount) || !SetCfa(frame.get(), rule.state))
        return false;
    rule.returnColumn = static_cast<std::uint8_t>(returnColumn);
    for (unsigned number = 0; number < kRegisterCount; ++number)
        if (!SetRegister(frame.get(), number, rule.state))
            return false;
    // By convention the caller's stack pointer is the canonical frame address.
    if (rule.state.how[kStackPointer] == How::Offset && rule.state.value[kStackPointer] == 0)
        rule.state.how[kStackPointer] = How::Same;
    return true;
}

} // namespace qxplatform
