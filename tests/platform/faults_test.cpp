// Faults as structured exceptions. Each fault is a single instruction of known length, which the handler skips.
#include <errhandlingapi.h>
#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <vector>

namespace
{

struct Seen
{
    std::uint32_t code = 0;
    std::uintptr_t address = 0;
    ULONG_PTR parameters[EXCEPTION_MAXIMUM_PARAMETERS] = {}; // a handler must not allocate memory
    DWORD count = 0;
    DWORD64 rip = 0;

    std::vector<ULONG_PTR> Parameters() const { return {parameters, parameters + count}; }
};

Seen seen;
int seenCount = 0;
DWORD64 skipped = 0; // the length of the faulting instruction, or 0 for a call to an address without code
DWORD64 newRax = 0;

LONG WINAPI SkipInstruction(EXCEPTION_POINTERS* exception)
{
    const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
    CONTEXT& context = *exception->ContextRecord;
    ++seenCount;
    seen.code = record.ExceptionCode;
    seen.address = reinterpret_cast<std::uintptr_t>(record.ExceptionAddress);
    std::copy(std::begin(record.ExceptionInformation), std::end(record.ExceptionInformation), seen.parameters);
    seen.count = record.NumberParameters;
    seen.rip = context.Rip;
    if (skipped == 0)
    {
        std::memcpy(&context.Rip, reinterpret_cast<void*>(context.Rsp), sizeof context.Rip);
        context.Rsp += sizeof context.Rip;
    }
    else
        context.Rip += skipped;
    context.Rax = newRax;
    return EXCEPTION_CONTINUE_EXECUTION;
}

// Masks the floating-point exceptions, so that the division is repeated without a fault, and changes the dividend.
LONG CALLBACK RepeatWithoutFault(EXCEPTION_POINTERS* exception)
{
    CONTEXT& context = *exception->ContextRecord;
    seen.code = exception->ExceptionRecord->ExceptionCode;
    context.MxCsr |= 0x1F80;
    context.FltSave.MxCsr |= 0x1F80;
    const float dividend = -8;
    std::memcpy(&context.FltSave.XmmRegisters[0], &dividend, sizeof dividend);
    return EXCEPTION_CONTINUE_EXECUTION;
}

LONG CALLBACK PassOn(EXCEPTION_POINTERS*)
{
    return EXCEPTION_CONTINUE_SEARCH;
}

// Executes a fault with `value` in the registers that it uses, and returns what the handler stored in Rax.
std::uint64_t ReadFrom(std::uint64_t value)
{
    asm volatile("movb (%%rax), %%al" : "+a"(value) : : "memory");
    return value;
}
std::uint64_t WriteTo(std::uint64_t value)
{
    asm volatile("movb %%al, (%%rax)" : "+a"(value) : : "memory");
    return value;
}
std::uint64_t Call(std::uint64_t value)
{
    // The call must not overwrite the red zone.
    asm volatile("sub $128, %%rsp\n call *%%rax\n add $128, %%rsp" : "+a"(value) : : "memory", "cc");
    return value;
}
std::uint64_t DivideBy(std::uint64_t value)
{
    std::uint64_t dividend = 1;
    asm volatile("divl %%ecx" : "+a"(dividend) : "c"(value), "d"(0) : "cc");
    return dividend;
}
std::uint64_t Undefined(std::uint64_t value)
{
    asm volatile("ud2" : "+a"(value));
    return value;
}
std::uint64_t Halt(std::uint64_t value)
{
    asm volatile("hlt" : "+a"(value));
    return value;
}
std::uint64_t Breakpoint(std::uint64_t value)
{
    asm volatile("int3" : "+a"(value));
    return value;
}

char someData[16];

} // namespace

TEST(Faults, AreDescribedAndContinuedWithTheChangedRegisters)
{
    const auto data = reinterpret_cast<std::uint64_t>(someData);
    const std::uint64_t readOnly = reinterpret_cast<std::uint64_t>(&ReadFrom) & ~std::uint64_t{0xFFF};
    const struct
    {
        std::uint64_t (*fault)(std::uint64_t);
        std::uint64_t value;
        DWORD64 length;
        std::uint32_t code;
        std::vector<ULONG_PTR> parameters;
    } cases[] = {{ReadFrom, 0, 2, 0xC0000005, {0, 0}}, {ReadFrom, 0x1234, 2, 0xC0000005, {0, 0x1234}},
        {WriteTo, 8, 2, 0xC0000005, {1, 8}}, {WriteTo, readOnly, 2, 0xC0000005, {1, readOnly}},
        {ReadFrom, std::uint64_t{1} << 63, 2, 0xC0000005, {0, ~ULONG_PTR{0}}}, {Call, 0, 0, 0xC0000005, {8, 0}},
        {Call, data, 0, 0xC0000005, {8, data}}, {DivideBy, 0, 2, 0xC0000094, {}}, {Undefined, 0, 2, 0xC000001D, {}},
        {Halt, 0, 1, 0xC0000096, {}}, {Breakpoint, 0, 1, 0x80000003, {0}}};
    void* const handler = AddVectoredExceptionHandler(1, &SkipInstruction);
    for (const auto& [fault, value, length, code, parameters] : cases)
    {
        seen = {};
        skipped = length;
        newRax = 0xABCDEF0123456789 + value;
        EXPECT_EQ(fault(value), newRax) << std::hex << code << ' ' << value;
        EXPECT_EQ(seen.code, code);
        EXPECT_EQ(seen.Parameters(), parameters) << std::hex << code << ' ' << value;
        EXPECT_EQ(seen.address, length == 0 ? value : seen.rip) << std::hex << code;
    }
    RemoveVectoredExceptionHandler(handler);
}

TEST(Faults, FloatingPointStateIsRestored)
{
    void* const handler = AddVectoredExceptionHandler(1, &RepeatWithoutFault);
    std::uint32_t before = 0;
    const std::uint32_t unmasked = 0x1D80;
    const float divisor = 0;
    float quotient = 0;
    asm volatile("stmxcsr %[before]\n ldmxcsr %[unmasked]\n divss %[divisor], %%xmm0\n ldmxcsr %[before]\n"
                 "movss %%xmm0, %[quotient]"
                 : [before] "=m"(before), [quotient] "=m"(quotient)
                 : [unmasked] "m"(unmasked), [divisor] "m"(divisor), "Yz"(4.0f));
    RemoveVectoredExceptionHandler(handler);
    EXPECT_EQ(seen.code, 0xC000008Eu);
    EXPECT_EQ(quotient, -std::numeric_limits<float>::infinity());
}

TEST(Faults, ReachTheFilterAfterTheVectoredHandlers)
{
    skipped = 2;
    newRax = 7;
    seenCount = 0;
    void* const passing = AddVectoredExceptionHandler(1, &PassOn);
    const auto before = SetUnhandledExceptionFilter(&SkipInstruction);
    EXPECT_EQ(ReadFrom(16), 7u);
    EXPECT_EQ(seenCount, 1);
    EXPECT_EQ(seen.Parameters(), (std::vector<ULONG_PTR>{0, 16}));
    RemoveVectoredExceptionHandler(passing);
    EXPECT_EQ(WriteTo(16), 7u);
    EXPECT_EQ(seenCount, 2);
    EXPECT_EQ(SetUnhandledExceptionFilter(before), &SkipInstruction);
}

// Handlers that are added as the first ones are called before the others, the newest first.
TEST(Faults, OrderOfTheVectoredHandlers)
{
    static char calls[5] = {};
    static const auto noted = [](char name)
    {
        calls[std::strlen(calls)] = name;
        return EXCEPTION_CONTINUE_SEARCH;
    };
    void* const handlers[] = {AddVectoredExceptionHandler(0, [](EXCEPTION_POINTERS*) -> LONG { return noted('c'); }),
        AddVectoredExceptionHandler(1, [](EXCEPTION_POINTERS*) -> LONG { return noted('b'); }),
        AddVectoredExceptionHandler(1, [](EXCEPTION_POINTERS*) -> LONG { return noted('a'); }),
        AddVectoredExceptionHandler(0, &SkipInstruction)};
    skipped = 2;
    newRax = 7;
    EXPECT_EQ(ReadFrom(16), 7u);
    EXPECT_STREQ(calls, "abc");
    for (void* const handler : handlers)
        RemoveVectoredExceptionHandler(handler);
}

TEST(Faults, RaisedExceptionsReachTheFilterToo)
{
    static std::uint32_t code = 0;
    static ULONG_PTR parameter = 0;
    const auto before = SetUnhandledExceptionFilter(
        [](EXCEPTION_POINTERS* exception) -> LONG
        {
            code = exception->ExceptionRecord->ExceptionCode;
            parameter = exception->ExceptionRecord->ExceptionInformation[0];
            return exception->ContextRecord->Rip != 0 ? EXCEPTION_CONTINUE_EXECUTION : EXCEPTION_CONTINUE_SEARCH;
        });
    const ULONG_PTR parameters[] = {42};
    RaiseException(0xE0001234, 0, 1, parameters);
    SetUnhandledExceptionFilter(before);
    EXPECT_EQ(code, 0xE0001234u);
    EXPECT_EQ(parameter, 42u);
}
