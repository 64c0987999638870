#include <processthreadsapi.h>
#include <synchapi.h>

#include "threads/futex.h"
#include "threads/held_sections.h"
#include "threads/thread_object.h"

#include <atomic>

using namespace qxplatform;

namespace
{

constexpr LONG kIsFree = 0;
constexpr LONG kIsHeld = 1;
constexpr LONG kHasWaiters = 2;

// Counts each section once, however often it was entered. The stop signal's handler reads it and must not make the
// loader allocate memory for thread-local objects.
[[gnu::tls_model("initial-exec")]] constinit thread_local volatile int heldSections = 0;

std::atomic_ref<LONG> LockWord(LPCRITICAL_SECTION section)
{
    return std::atomic_ref<LONG>(section->LockCount);
}

HANDLE ThisThread()
{
    return reinterpret_cast<HANDLE>(static_cast<ULONG_PTR>(GetCurrentThreadId()));
}

std::atomic_ref<HANDLE> Owner(LPCRITICAL_SECTION section)
{
    return std::atomic_ref<HANDLE>(section->OwningThread);
}

bool TakeFree(LPCRITICAL_SECTION section)
{
    LONG expected = kIsFree;
    return LockWord(section).compare_exchange_strong(
        expected, kIsHeld, std::memory_order_acquire, std::memory_order_relaxed);
}

bool SpinForFree(LPCRITICAL_SECTION section)
{
    for (ULONG_PTR round = 0; round < section->SpinCount; ++round)
    {
        if (LockWord(section).load(std::memory_order_relaxed) == kIsFree && TakeFree(section))
            return true;
        YieldProcessor();
    }
    return false;
}

// A thread that takes the section here marks it as contended, because it doesn't know whether other threads wait.
void WaitForFree(LPCRITICAL_SECTION section)
{
    ThreadObject* const thread = ThreadObject::CurrentIfKnown();
    while (LockWord(section).exchange(kHasWaiters, std::memory_order_acquire) != kIsFree)
    {
        if (thread != nullptr)
            thread->gate.Enter();
        FutexWait(&section->LockCount, kHasWaiters);
        if (thread != nullptr)
            thread->LeaveGate();
    }
}

bool EnterAgain(LPCRITICAL_SECTION section, HANDLE thread)
{
    if (Owner(section).load(std::memory_order_relaxed) != thread)
        return false;
    ++section->RecursionCount;
    return true;
}

void BecomeOwner(LPCRITICAL_SECTION section, HANDLE thread)
{
    Owner(section).store(thread, std::memory_order_relaxed);
    section->RecursionCount = 1;
    heldSections = heldSections + 1;
}

// Ends a thread that was terminated while it held a section.
void EndIfOrdered()
{
    ThreadObject* const thread = ThreadObject::CurrentIfKnown();
    if (thread == nullptr || !thread->gate.IsEndOrdered())
        return;
    thread->gate.Enter();
    thread->LeaveGate();
}

} // namespace

bool qxplatform::HoldsCriticalSections()
{
    return heldSections != 0;
}

void WINAPI InitializeCriticalSection(LPCRITICAL_SECTION lpCriticalSection)
{
    *lpCriticalSection = CRITICAL_SECTION{};
}

BOOL WINAPI InitializeCriticalSectionAndSpinCount(LPCRITICAL_SECTION lpCriticalSection, DWORD dwSpinCount)
{
    *lpCriticalSection = CRITICAL_SECTION{};
    // The high byte contains flags.
    lpCriticalSection->SpinCount = dwSpinCount & 0x00FFFFFF;
    return TRUE;
}

void WINAPI EnterCriticalSection(LPCRITICAL_SECTION lpCriticalSection)
{
    const HANDLE thread = ThisThread();
    if (EnterAgain(lpCriticalSection, thread))
        return;
    if (!TakeFree(lpCriticalSection) && !SpinForFree(lpCriticalSection))
        WaitForFree(lpCriticalSection);
    BecomeOwner(lpCriticalSection, thread);
}

BOOL WINAPI TryEnterCriticalSection(LPCRITICAL_SECTION lpCriticalSection)
{
    const HANDLE thread = ThisThread();
    if (EnterAgain(lpCriticalSection, thread))
        return TRUE;
    if (!TakeFree(lpCriticalSection))
        return FALSE;
    BecomeOwner(lpCriticalSection, thread);
    return TRUE;
}

void WINAPI LeaveCriticalSection(LPCRITICAL_SECTION lpCriticalSection)
{
    if (--lpCriticalSection->RecursionCount > 0)
        return;
    Owner(lpCriticalSection).store(nullptr, std::memory_order_relaxed);
    LONG* const word = &lpCriticalSection->LockCount;
    // From here on the section may no longer exist: another thread may have entered, left and deleted it.
    if (std::atomic_ref<LONG>(*word).exchange(kIsFree, std::memory_order_release) == kHasWaiters)
        FutexWakeOne(word);
    heldSections = heldSections - 1;
    if (heldSections == 0)
        EndIfOrdered();
}

void WINAPI DeleteCriticalSection(LPCRITICAL_SECTION lpCriticalSection)
{
    *lpCriticalSection = CRITICAL_SECTION{};
}
