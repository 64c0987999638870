#include "stack/stack_memory.h"

#include "base/readable.h"

#include <atomic>

extern "C" void* __libc_stack_end; // the stack pointer with which the program was entered

namespace qxplatform
{
namespace
{

constexpr std::uintptr_t kPage = 4096;

// The part of the thread's own stack that was found to be readable, which it remains while the thread lives. The stack
// of another thread never has the same address, and an alternate stack below it is separated by an unreadable page.
struct KnownStack
{
    std::atomic<std::uintptr_t> begin = 0;
    std::atomic<std::uintptr_t> end = 0; // set last, because a signal handler may read both in between
};

[[gnu::tls_model("initial-exec")]] constinit thread_local KnownStack knownStack;

// Returns the end of the thread's own stack if that stack contains the address. The thread's control block is on top of
// the stack of each thread but the first.
std::uintptr_t EndOfOwnStack(std::uintptr_t address)
{
    const auto ofThread = reinterpret_cast<std::uintptr_t>(__builtin_thread_pointer());
    const auto ofProgram = reinterpret_cast<std::uintptr_t>(__libc_stack_end) + sizeof(void*);
    if (address >= ofThread)
        return ofProgram;
    return address < ofProgram && ofProgram < ofThread ? ofProgram : ofThread;
}

// Returns the end of the readable pages from an address, at most `end`.
std::uintptr_t EndOfReadable(std::uintptr_t address, std::uintptr_t end)
{
    for (std::uintptr_t page = address & ~(kPage - 1); page < end; page += kPage)
        if (!IsReadable(page))
            return page;
    return end;
}

} // namespace

StackMemory StackMemory::OfThisThread(std::uintptr_t stackPointer)
{
    constexpr std::uintptr_t kMostOfOwnStack = 8 << 20;
    constexpr std::uintptr_t kMostOfOtherStack = 16 * kPage;
    const std::uintptr_t begin = knownStack.begin.load(std::memory_order_relaxed);
    const std::uintptr_t end = knownStack.end.load(std::memory_order_relaxed);
    if (stackPointer >= begin && stackPointer < end) [[likely]]
        return {stackPointer, end};

    // The stack has grown, or this is its first use.
    const std::uintptr_t ownEnd = end != 0 ? end : EndOfOwnStack(stackPointer);
    if (stackPointer < ownEnd && ownEnd - stackPointer <= kMostOfOwnStack)
    {
        const std::uintptr_t unknownEnd = end != 0 ? begin : ownEnd;
        if (EndOfReadable(stackPointer, unknownEnd) == unknownEnd)
        {
            knownStack.begin.store(stackPointer & ~(kPage - 1), std::memory_order_relaxed);
            std::atomic_signal_fence(std::memory_order_seq_cst);
            knownStack.end.store(ownEnd & ~std::uintptr_t{7}, std::memory_order_relaxed);
            return {stackPointer, ownEnd & ~std::uintptr_t{7}};
        }
    }
    const std::uintptr_t page = stackPointer & ~(kPage - 1);
    const std::uintptr_t readableEnd = EndOfReadable(page, page + kMostOfOtherStack);
    return readableEnd > stackPointer ? StackMemory(stackPointer, readableEnd) : StackMemory();
}

bool StackMemory::ReadElsewhere(std::uintptr_t address, std::uintptr_t& value)
{
    return ReadMemory(address, &value, sizeof value) == sizeof value;
}

} // namespace qxplatform
