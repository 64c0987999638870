#include <processthreadsapi.h>
#include <synchapi.h>

#include "base/lock_word.h"
#include "threads/held_sections.h"
#include "threads/thread_object.h"

using namespace qxplatform;

namespace
{

// Counts each section once, however often it was entered. The stop signal's handler reads it and must not make the
// loader allocate memory for thread-local objects.
[[gnu::tls_model("initial-exec")]] constinit thread_local volatile int heldSections = 0;

LockWord WordOf(LPCRITICAL_SECTION section)
{
    return LockWord(section->LockCount);
}

[[gnu::noinline]] bool SpinForFree(LPCRITICAL_SECTION section)
{
    LockWord word = WordOf(section);
    for (ULONG_PTR round = 0; round < section->SpinCount; ++round)
    {
        if (word.IsFree() && word.TakeIfFree())
            return true;
        YieldProcessor();
    }
    return false;
}

[[gnu::noinline]] void WaitForFree(LPCRITICAL_SECTION section)
{
    ThreadObject* const thread = ThreadObject::CurrentIfKnown();
    WordOf(section).Take(
        [thread]
        {
            if (thread != nullptr)
                thread->gate.Enter();
        },
        [thread]
        {
            if (thread != nullptr)
                thread->LeaveGate();
        });
}

bool EnterAgain(LPCRITICAL_SECTION section)
{
    if (!WordOf(section).IsMine())
        return false;
    ++section->RecursionCount;
    return true;
}

void BecomeOwner(LPCRITICAL_SECTION section)
{
    section->RecursionCount = 1;
    heldSections = heldSections + 1;
}

// Ends a thread that was terminated while it held a section.
void EndIfOrdered()
{
    ThreadObject* const thread = ThreadObject::CurrentIfKnown();
    if (thread == nullptr || !thread->gate.IsEndOrdered()) [[likely]]
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

// Forks wait until the thread leaves the section.
void WINAPI EnterCriticalSection(LPCRITICAL_SECTION lpCriticalSection)
{
    if (EnterAgain(lpCriticalSection))
        return;
    BeginForkHold();
    if (!WordOf(lpCriticalSection).TakeIfFree() && !SpinForFree(lpCriticalSection))
        WaitForFree(lpCriticalSection);
    BecomeOwner(lpCriticalSection);
}

BOOL WINAPI TryEnterCriticalSection(LPCRITICAL_SECTION lpCriticalSection)
{
    if (EnterAgain(lpCriticalSection))
        return TRUE;
    BeginForkHold();
    if (!WordOf(lpCriticalSection).TryToTake())
    {
        EndForkHold();
        return FALSE;
    }
    BecomeOwner(lpCriticalSection);
    return TRUE;
}

void WINAPI LeaveCriticalSection(LPCRITICAL_SECTION lpCriticalSection)
{
    if (--lpCriticalSection->RecursionCount > 0)
        return;
    WordOf(lpCriticalSection).Release();
    EndForkHold();
    heldSections = heldSections - 1;
    if (heldSections == 0)
        EndIfOrdered();
}

void WINAPI DeleteCriticalSection(LPCRITICAL_SECTION lpCriticalSection)
{
    *lpCriticalSection = CRITICAL_SECTION{};
}
