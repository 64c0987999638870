#include "base/fork_gate.h"

#include "base/futex.h"

#include <climits>
#include <ctime>

#include <linux/membarrier.h>
#include <pthread.h>
#include <sched.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace qxplatform
{

constinit thread_local ForkRecord forkRecord;
constinit std::atomic<bool> isForking = false;

namespace
{

constexpr long kPatience = 500'000'000; // nanoseconds

constinit pthread_mutex_t listLock = PTHREAD_MUTEX_INITIALIZER; // also held during a fork
constinit ForkRecord* first = nullptr;
constinit std::atomic<std::uint32_t> nextSerial = 1;
constinit std::atomic<std::uint32_t> firstOfProcess = 0; // threads with a smaller number belong to a parent process
constinit std::atomic<std::uint32_t> survivor = 0;       // the exception: the thread that called fork()
constinit std::atomic<std::uint32_t> forking = 0;        // the thread that is calling fork()
constinit std::atomic<unsigned> forkGeneration = 0;
constinit LONG forkWord = FALSE; // the futex word of threads that wait for the end of a fork
pthread_key_t endKey;
bool hasEndKey = false;

void Link(ForkRecord& record)
{
    record.next = first;
    record.link = &first;
    if (first != nullptr)
        first->link = &record.next;
    first = &record;
}

void Unlink(ForkRecord& record)
{
    *record.link = record.next;
    if (record.next != nullptr)
        record.next->link = record.link;
    record.link = nullptr;
}

// Removes the thread's record. Destructors that run later on the thread may still take locks, so the record is entered
// again if the C library is going to call this function once more.
void OnThreadEnd(void*)
{
    pthread_mutex_lock(&listLock);
    if (forkRecord.link != nullptr)
        Unlink(forkRecord);
    pthread_mutex_unlock(&listLock);
    if (++forkRecord.exits < PTHREAD_DESTRUCTOR_ITERATIONS - 1 && pthread_setspecific(endKey, &forkRecord) == 0)
    {
        pthread_mutex_lock(&listLock);
        Link(forkRecord);
        pthread_mutex_unlock(&listLock);
    }
}

LONGLONG Now()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1'000'000'000LL + now.tv_nsec;
}

// A thread first stores its hold and then checks for a fork. A memory barrier between these two steps would slow down
// every lock. Instead, this function runs a barrier on all processors that run threads of the process.
void RunBarriers()
{
    if (syscall(SYS_membarrier, MEMBARRIER_CMD_PRIVATE_EXPEDITED, 0, 0) == 0)
        return;
    const timespec longer{0, 1'000'000}; // longer than any store takes to become visible
    nanosleep(&longer, nullptr);
}

void BeforeFork()
{
    const std::uint32_t serial = ThreadSerial();
    pthread_mutex_lock(&listLock);
    forking = serial;
    std::atomic_ref(forkWord).store(TRUE);
    isForking.store(true);
    RunBarriers();
    const LONGLONG end = Now() + kPatience;
    for (const ForkRecord* record = first; record != nullptr; record = record->next)
    {
        if (record == &forkRecord)
            continue;
        for (int tries = 0; record->holds.load(std::memory_order_acquire) != 0 && Now() < end; ++tries)
        {
            const timespec pause{0, 50'000};
            if (tries < 100)
                sched_yield();
            else
                nanosleep(&pause, nullptr);
        }
    }
}

void LetGo()
{
    isForking.store(false);
    std::atomic_ref(forkWord).store(FALSE);
    pthread_mutex_unlock(&listLock);
}

void AfterForkInParent()
{
    LetGo();
    FutexWakeAll(&forkWord);
}

void AfterForkInChild()
{
    firstOfProcess = nextSerial.load();
    survivor = forkRecord.serial;
    ++forkGeneration;
    first = nullptr;
    if (forkRecord.link != nullptr)
        Link(forkRecord);
    LetGo();
}

// Runs before all other initialisers of the layer, so that its handlers are the last before a fork and the first after.
[[gnu::constructor(101)]] void PrepareForForks()
{
    hasEndKey = pthread_key_create(&endKey, &OnThreadEnd) == 0;
    syscall(SYS_membarrier, MEMBARRIER_CMD_REGISTER_PRIVATE_EXPEDITED, 0, 0);
    pthread_atfork(&BeforeFork, &AfterForkInParent, &AfterForkInChild);
}

} // namespace

// Enters the record of the calling thread. If the end of the thread can't be detected, only its number is set, and
// forks don't wait for the thread.
void EnterForkRecord()
{
    forkRecord.serial = nextSerial.fetch_add(1);
    if (!hasEndKey || pthread_setspecific(endKey, &forkRecord) != 0)
        return;
    pthread_mutex_lock(&listLock);
    Link(forkRecord);
    pthread_mutex_unlock(&listLock);
}

// Waits until no fork is in progress. The thread that forks doesn't wait for itself: fork handlers of other libraries
// may take locks.
void WaitForFork()
{
    while (isForking.load() && forking.load() != forkRecord.serial)
    {
        EndForkHold();
        FutexWait(&forkWord, TRUE);
        forkRecord.holds.store(1);
    }
}

bool WasAbandoned(std::uint32_t serial)
{
    return serial < firstOfProcess.load(std::memory_order_relaxed) &&
           serial != survivor.load(std::memory_order_relaxed);
}

unsigned ForkGeneration()
{
    return forkGeneration.load(std::memory_order_relaxed);
}

} // namespace qxplatform
