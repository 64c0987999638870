#include "stack/registers.h"

#include <iterator>

namespace qxplatform
{
namespace
{

#if defined(__x86_64__)

constexpr DWORD64 CONTEXT::*kFields[] = {
    &CONTEXT::Rax,
    &CONTEXT::Rdx,
    &CONTEXT::Rcx,
    &CONTEXT::Rbx,
    &CONTEXT::Rsi,
    &CONTEXT::Rdi,
    &CONTEXT::Rbp,
    &CONTEXT::Rsp,
    &CONTEXT::R8,
    &CONTEXT::R9,
    &CONTEXT::R10,
    &CONTEXT::R11,
    &CONTEXT::R12,
    &CONTEXT::R13,
    &CONTEXT::R14,
    &CONTEXT::R15,
    &CONTEXT::Rip,
};
static_assert(std::size(kFields) == kRegisterCount);

template <class Context>
auto& FieldOf(Context& context, unsigned number)
{
    return context.*kFields[number];
}

#elif defined(__aarch64__)

template <class Context>
auto& FieldOf(Context& context, unsigned number)
{
    if (number == kProgramCounter)
        return context.Pc;
    return number == kStackPointer ? context.Sp : context.X[number];
}

#endif

} // namespace

Registers RegistersOf(const CONTEXT& context)
{
    Registers registers;
    registers.known = kAllRegisters;
    for (unsigned number = 0; number < kRegisterCount; ++number)
        registers.value[number] = FieldOf(context, number);
    return registers;
}

void StoreRegisters(const Registers& registers, CONTEXT& context)
{
    for (unsigned number = 0; number < kRegisterCount; ++number)
        if (registers.Has(number))
            FieldOf(context, number) = registers.value[number];
}

} // namespace qxplatform
