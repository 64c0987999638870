// The functions of private heaps. A handle is the address of its heap, which is trusted.
#include "base/fail.h"
#include "base/fork_gate.h"
#include "heap/private_heap.h"
#include "heap/quick_blocks.h"

#include <cstring>

#include <sys/single_threaded.h>

using namespace qxplatform;
using heap::PrivateHeap;

namespace
{

// STATUS_NO_MEMORY
constexpr DWORD kNoMemory = 0xC0000017;
constexpr SIZE_T kNoSize = static_cast<SIZE_T>(-1);

constinit PrivateHeap processHeap;

PrivateHeap& HeapOf(HANDLE handle)
{
    return *static_cast<PrivateHeap*>(handle);
}

// Holds the lock of a heap, or, if the caller serialises the calls itself, only delays forks so that a forked child
// finds the heap in a consistent state.
class HeapGuard
{
public:
    HeapGuard(PrivateHeap& heap, DWORD flags)
        : _section(((heap.Options() | flags) & HEAP_NO_SERIALIZE) == 0 ? &heap.Section() : nullptr)
    {
        if (_section != nullptr)
            EnterCriticalSection(_section);
        else
            BeginForkHold();
    }
    HeapGuard(const HeapGuard&) = delete;
    HeapGuard& operator=(const HeapGuard&) = delete;
    ~HeapGuard()
    {
        if (_section != nullptr)
            LeaveCriticalSection(_section);
        else
            EndForkHold();
    }

private:
    CRITICAL_SECTION* const _section;
};

template <class Work>
[[gnu::noinline]] auto RunGuarded(PrivateHeap& heap, DWORD flags, Work work)
{
    const HeapGuard guard(heap, flags);
    return work();
}

// Runs a short operation of a heap. A process with one thread needs no guard: nobody else uses the heap or forks, and
// no operation starts a thread. The two paths are separate functions, so that the fast path saves no registers.
template <class Work>
[[gnu::always_inline]] inline auto Run(PrivateHeap& heap, DWORD flags, Work work)
{
    if (__libc_single_threaded) [[likely]]
        return work();
    return RunGuarded(heap, flags, work);
}

SIZE_T SizeOfAny(PrivateHeap& heap, DWORD flags, const void* block)
{
    return Run(heap, flags,
        [&heap, block]
        {
            PrivateHeap::Place place;
            return heap.Find(block, place) ? PrivateHeap::SizeOf(place) : kNoSize;
        });
}

bool FreeMarked(PrivateHeap& heap, const void* block, DWORD mark)
{
    PrivateHeap::Place place;
    if (!heap.Find(block, place) || PrivateHeap::SizeOf(place) < sizeof mark ||
        std::memcmp(block, &mark, sizeof mark) != 0)
        return false;
    heap.Free(place);
    return true;
}

// Allocates under a guard, in processes with several threads and if no open span has a free block of the size.
[[gnu::noinline]] void* AllocateGuarded(PrivateHeap& heap, DWORD flags, std::size_t size)
{
    void* block = nullptr;
    bool isZeroed = false;
    {
        const HeapGuard guard(heap, flags);
        block = heap.Allocate(size, isZeroed);
    }
    if (block == nullptr) [[unlikely]]
    {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        if (((heap.Options() | flags) & HEAP_GENERATE_EXCEPTIONS) != 0)
            RaiseException(kNoMemory, 0, 0, nullptr);
    }
    else if ((flags & HEAP_ZERO_MEMORY) != 0 && !isZeroed)
        std::memset(block, 0, size);
    return block;
}

} // namespace

HANDLE WINAPI GetProcessHeap(void)
{
    return &processHeap;
}

// Memory is committed when it is first used, so the initial size has no effect.
HANDLE WINAPI HeapCreate(DWORD flOptions, SIZE_T, SIZE_T dwMaximumSize)
{
    if (dwMaximumSize != 0)
    {
        SetLastError(ERROR_NOT_SUPPORTED);
        return nullptr;
    }
    PrivateHeap* const created = PrivateHeap::Create(flOptions & (HEAP_NO_SERIALIZE | HEAP_GENERATE_EXCEPTIONS));
    if (created == nullptr)
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return created;
}

BOOL WINAPI HeapDestroy(HANDLE hHeap)
{
    if (hHeap == nullptr || hHeap == &processHeap)
        return Fail(ERROR_INVALID_HANDLE);
    PrivateHeap::Destroy(&HeapOf(hHeap));
    return TRUE;
}

LPVOID WINAPI HeapAlloc(HANDLE hHeap, DWORD dwFlags, SIZE_T dwBytes)
{
    PrivateHeap& heap = HeapOf(hHeap);
    void* const block = __libc_single_threaded ? heap.AllocateQuickly(dwBytes) : nullptr;
    if (block == nullptr) [[unlikely]]
        return AllocateGuarded(heap, dwFlags, dwBytes);
    return (dwFlags & HEAP_ZERO_MEMORY) != 0 ? std::memset(block, 0, dwBytes) : block;
}

BOOL WINAPI HeapFree(HANDLE hHeap, DWORD dwFlags, LPVOID lpMem)
{
    if (lpMem == nullptr)
        return TRUE;
    PrivateHeap& heap = HeapOf(hHeap);
    return Run(heap, dwFlags, [&heap, lpMem] { return heap.Free(lpMem); }) ? TRUE : Fail(ERROR_INVALID_PARAMETER);
}

SIZE_T WINAPI HeapSize(HANDLE hHeap, DWORD dwFlags, LPCVOID lpMem)
{
    const SIZE_T size = SizeOfAny(HeapOf(hHeap), dwFlags, lpMem);
    if (size == kNoSize)
        SetLastError(ERROR_INVALID_PARAMETER);
    return size;
}

SIZE_T WINAPI QxHeapSizeOfAny(HANDLE hHeap, DWORD dwFlags, LPCVOID lpMem)
{
    return SizeOfAny(HeapOf(hHeap), dwFlags, lpMem);
}

BOOL WINAPI QxHeapFreeMarked(HANDLE hHeap, DWORD dwFlags, LPVOID lpMem, DWORD mark)
{
    PrivateHeap& heap = HeapOf(hHeap);
    return Run(heap, dwFlags, [&heap, lpMem, mark] { return FreeMarked(heap, lpMem, mark); });
}

const char* WINAPI QxSingleThreadedFlag(void)
{
    return &__libc_single_threaded;
}

BOOL WINAPI HeapWalk(HANDLE hHeap, LPPROCESS_HEAP_ENTRY lpEntry)
{
    PrivateHeap& heap = HeapOf(hHeap);
    const HeapGuard guard(heap, 0);
    switch (heap.Walk(*lpEntry))
    {
    case PrivateHeap::Step::Found:
        return TRUE;
    case PrivateHeap::Step::AtEnd:
        return Fail(ERROR_NO_MORE_ITEMS);
    case PrivateHeap::Step::NoEntry:
        break;
    }
    return Fail(ERROR_INVALID_PARAMETER);
}

BOOL WINAPI HeapLock(HANDLE hHeap)
{
    if ((HeapOf(hHeap).Options() & HEAP_NO_SERIALIZE) != 0)
        return Fail(ERROR_INVALID_PARAMETER);
    EnterCriticalSection(&HeapOf(hHeap).Section());
    return TRUE;
}

BOOL WINAPI HeapUnlock(HANDLE hHeap)
{
    if ((HeapOf(hHeap).Options() & HEAP_NO_SERIALIZE) != 0)
        return Fail(ERROR_INVALID_PARAMETER);
    LeaveCriticalSection(&HeapOf(hHeap).Section());
    return TRUE;
}

BOOL WINAPI HeapValidate(HANDLE hHeap, DWORD dwFlags, LPCVOID lpMem)
{
    PrivateHeap& heap = HeapOf(hHeap);
    const HeapGuard guard(heap, dwFlags);
    PrivateHeap::Place place;
    return lpMem != nullptr ? heap.Find(lpMem, place) : heap.IsSound();
}

SIZE_T WINAPI HeapCompact(HANDLE hHeap, DWORD dwFlags)
{
    PrivateHeap& heap = HeapOf(hHeap);
    const HeapGuard guard(heap, dwFlags);
    SetLastError(NO_ERROR);
    return heap.Compact();
}
