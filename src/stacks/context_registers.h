// Returns the registers of a CONTEXT at which a stack walk begins, for the processor that the program was built for.
#pragma once

#include <windows.h>

#include <cstdint>

namespace qx
{

// Templates, so that the fields of other processors, which CONTEXT lacks, may be named.
template <class Context>
std::uint64_t ProgramCounterOf(const Context& context)
{
    if constexpr (requires { context.Rip; })
        return context.Rip;
    else
        return context.Pc;
}

template <class Context>
std::uint64_t StackPointerOf(const Context& context)
{
    if constexpr (requires { context.Rsp; })
        return context.Rsp;
    else
        return context.Sp;
}

// Returns the number that debug-help libraries use for the processor.
template <class Context>
constexpr DWORD MachineOf()
{
    if constexpr (requires(Context context) { context.Rip; })
        return 0x8664;
    else
        return 0xAA64;
}

} // namespace qx
