// The functions of private heaps. A handle is the address of its heap, which is trusted.
#include "base/fail.h"
#include "base/fork_gate.h"
#include "heap/private_heap.h"

#include <cstring>

#include <sys/single_threaded.h>

using namespace qxplatform;
using heap::PrivateHeap;

namespace
{

// STATUS_NO_MEMORY
constexpr DWORD kNoMemory = 0xC0000017;

constinit PrivateHeap processHeap;

PrivateHeap& HeapOf(HANDLE handle)
{
    return *static_cast<PrivateHeap*>(handle);
}

// Holds the lock of a heap during an operation. A process with one thread needs no lock, because no operation starts
// another thread. A ForkHold then ensures that a forked child finds the heap in a consistent state.
class HeapGuard
{
public:
    HeapGuard(PrivateHeap& heap, DWORD flags) : _section(nullptr)
    {
        if (__libc_single_threaded || ((heap.Options() | flags) & HEAP_NO_SERIALIZE) != 0)
        {
            BeginForkHold();
            return;
        }
        _section = &heap.Section();
        EnterCriticalSection(_section);
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
    CRITICAL_SECTION* _section;
};

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
    void* block = nullptr;
    bool isZeroed = false;
    {
        const HeapGuard guard(heap, dwFlags);
        block = heap.Allocate(dwBytes, isZeroed);
    }
    if (block == nullptr) [[unlikely]]
    {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        if (((heap.Options() | dwFlags) & HEAP_GENERATE_EXCEPTIONS) != 0)
            RaiseException(kNoMemory, 0, 0, nullptr);
    }
    else if ((dwFlags & HEAP_ZERO_MEMORY) != 0 && !isZeroed)
        std::memset(block, 0, dwBytes);
    return block;
}

BOOL WINAPI HeapFree(HANDLE hHeap, DWORD dwFlags, LPVOID lpMem)
{
    if (lpMem == nullptr)
        return TRUE;
    PrivateHeap& heap = HeapOf(hHeap);
    const HeapGuard guard(heap, dwFlags);
    return heap.Free(lpMem) ? TRUE : Fail(ERROR_INVALID_PARAMETER);
}

SIZE_T WINAPI HeapSize(HANDLE hHeap, DWORD dwFlags, LPCVOID lpMem)
{
    PrivateHeap& heap = HeapOf(hHeap);
    const HeapGuard guard(heap, dwFlags);
    PrivateHeap::Place place;
    if (heap.Find(lpMem, place))
        return PrivateHeap::SizeOf(place);
    SetLastError(ERROR_INVALID_PARAMETER);
    return static_cast<SIZE_T>(-1);
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
