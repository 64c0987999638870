#include "stack/unwinder.h"

#include "stack/expression.h"

namespace qxplatform
{
namespace
{

// Leaves a function without tables, whose return address is where the call stored it. Only the innermost frame, and a
// frame that a signal interrupted, can be such a function, for example after a call of a wild pointer.
Step LeaveUnknownFunction(Registers& registers, bool& isExact, const StackMemory& memory)
{
    if (!isExact)
        return Step::End;
#if defined(__x86_64__)
    std::uintptr_t returnAddress = 0;
    if (!memory.Read(registers.value[kStackPointer], returnAddress))
        return Step::End;
    registers.value[kStackPointer] += kReturnAddressSize;
#elif defined(__aarch64__)
    (void)memory;
    const std::uintptr_t returnAddress = registers.value[kLinkRegister];
    if (returnAddress == registers.value[kProgramCounter])
        return Step::End;
#endif
    if (returnAddress == 0)
        return Step::End;
    registers.Set(kProgramCounter, returnAddress);
    isExact = false;
    return Step::Done;
}

// Removes the signature that some processors add to return addresses.
std::uintptr_t WithoutSignature(std::uintptr_t address)
{
#if defined(__aarch64__)
    constexpr unsigned kAddressBits = 48;
    return address & ((std::uintptr_t{1} << kAddressBits) - 1);
#else
    return address;
#endif
}

class RuleApplication
{
public:
    RuleApplication(
        const FrameRule& rule, const UnwindTable& table, const Registers& registers, const StackMemory& memory)
        : _rule(rule),
          _table(table),
          _old(registers),
          _memory(memory)
    {
    }

    Step Run(Registers& result)
    {
        const FrameRule::State& state = _rule.state;
        if (state.cfaHow == How::Expression)
        {
            if (!Compute(state.CfaExpression(), nullptr, _cfa))
                return Failure();
        }
        else if (_old.Has(state.cfaRegister))
            _cfa = _old.value[state.cfaRegister] + static_cast<std::uintptr_t>(state.cfaOffset);
        else
            return Step::UnknownRegister;

        result.known = 0;
        for (unsigned number = 0; number < kRegisterCount; ++number)
            if (!Restore(number, result))
                return Step::End;
        if (state.how[kStackPointer] == How::Same)
            result.Set(kStackPointer, _cfa);
        if (!result.Has(_rule.returnColumn) || !result.Has(kStackPointer))
            return Failure();
        result.Set(kProgramCounter, WithoutSignature(result.value[_rule.returnColumn]));
        return result.value[kProgramCounter] == 0 ? Step::End : Step::Done;
    }

private:
    // If some registers had no value, the step may have failed for that reason.
    Step Failure() const { return _old.known == kAllRegisters ? Step::End : Step::UnknownRegister; }

    bool Compute(const std::uint8_t* expression, const std::uintptr_t* start, std::uintptr_t& result)
    {
        return Evaluate(expression, _table.frames, _old, _memory, start, result);
    }

    // Restores a register. Returns false if the stack is damaged. A register that can't be computed gets no value.
    bool Restore(unsigned number, Registers& result)
    {
        const FrameRule::State& state = _rule.state;
        const std::int64_t value = state.value[number];
        std::uintptr_t address = _cfa + static_cast<std::uintptr_t>(value);
        std::uintptr_t restored = 0;
        switch (state.how[number])
        {
        case How::Same:
            if (_old.Has(number))
                result.Set(number, _old.value[number]);
            return true;
        case How::Undefined:
            return number != _rule.returnColumn; // the outermost function has no caller
        case How::Offset:
            result.Set(number, address);
            return true;
        case How::InRegister:
            if (value >= 0 && _old.Has(static_cast<unsigned>(value)))
                result.Set(number, _old.value[value]);
            return true;
        case How::Expression:
            if (Compute(state.ExpressionOf(number), &_cfa, restored))
                result.Set(number, restored);
            return true;
        case How::AtExpression:
            if (!Compute(state.ExpressionOf(number), &_cfa, address))
                return true;
            break;
        case How::AtOffset:
            break;
        }
        if (!_memory.Read(address, restored))
            return number != _rule.returnColumn;
        result.Set(number, restored);
        return true;
    }

    const FrameRule& _rule;
    const UnwindTable& _table;
    const Registers& _old;
    const StackMemory& _memory;
    std::uintptr_t _cfa = 0;
};

} // namespace

Step ApplyRule(
    const FrameRule& rule, const UnwindTable& table, Registers& registers, bool& isExact, const StackMemory& memory)
{
    Registers caller;
    const Step step = RuleApplication(rule, table, registers, memory).Run(caller);
    if (step != Step::Done)
        return step;
    // A frame is above the frames that it calls, except for a frame that a signal interrupted: the handler may use
    // another stack. Only a function that calls nothing can do without a frame. longjmp() has
    // already left its own frame at its last instruction, the jump.
    const bool hasLeft = isExact && rule.state.how[kStackPointer] != How::Same;
    const std::uintptr_t leastSize = hasLeft ? 0 : isExact ? kReturnAddressSize : sizeof(void*);
    if (!rule.isSignalFrame && caller.value[kStackPointer] < registers.value[kStackPointer] + leastSize)
        return Step::End;
    registers = caller;
    isExact = rule.isSignalFrame;
    return Step::Done;
}

Step StepOut(Registers& registers, bool& isExact, const StackMemory& memory)
{
    ModuleTables tables;
    const std::uintptr_t address = LookUpAddress(registers, isExact);
    if (!FindModuleTables(address, tables))
        return LeaveUnknownFunction(registers, isExact, memory);
    FrameRule rule;
    if (!FindFrameRule(tables.table, address, rule))
        return LeaveUnknownFunction(registers, isExact, memory);
    return ApplyRule(rule, tables.table, registers, isExact, memory);
}

} // namespace qxplatform
