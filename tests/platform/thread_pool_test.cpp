// The system's thread pool, with cleanup groups, completion ports, and the processors that it has.
#include "threads_support.h"

#include <bit>
#include <vector>

// Affinity is set by other means on each system; only on the layer does it count for GetActiveProcessorCount.
#if defined(__linux__)
#include <sched.h>
#endif

using namespace qxtest;

namespace
{

class Pool
{
public:
    Pool()
    {
        environment.Version = 1;
        environment.Pool = CreateThreadpool(nullptr);
        environment.CleanupGroup = CreateThreadpoolCleanupGroup();
    }
    Pool(const Pool&) = delete;
    Pool& operator=(const Pool&) = delete;
    ~Pool()
    {
        CloseThreadpoolCleanupGroupMembers(environment.CleanupGroup, FALSE, nullptr);
        CloseThreadpoolCleanupGroup(environment.CleanupGroup);
        CloseThreadpool(environment.Pool);
    }

    PTP_WORK Make(PTP_WORK_CALLBACK callback, void* context)
    {
        return CreateThreadpoolWork(callback, context, &environment);
    }

    TP_CALLBACK_ENVIRON environment{};
};

void CALLBACK Count(PTP_CALLBACK_INSTANCE, void* context, PTP_WORK)
{
    ++*static_cast<std::atomic<int>*>(context);
}

struct Held
{
    const Event go;
    std::atomic<int> begun = 0;
    std::atomic<int> ended = 0;
};

void CALLBACK Hold(PTP_CALLBACK_INSTANCE instance, void* context, PTP_WORK)
{
    Held& held = *static_cast<Held*>(context);
    CallbackMayRunLong(instance);
    ++held.begun;
    WaitForSingleObject(held.go, patience);
    ++held.ended;
}

bool WaitFor(const std::atomic<int>& value, int expected)
{
    const ULONGLONG end = GetTickCount64() + patience;
    while (value != expected && GetTickCount64() < end)
        Sleep(1);
    return value == expected;
}

// The end of a group waits for what runs. Where it cancels, each member is told.
TEST(ThreadPools, TheEndOfAGroup)
{
    for (const bool cancels : {false, true})
    {
        std::atomic<int> cancelled = 0;
        Held held;
        Pool pool;
        pool.environment.CleanupGroupCancelCallback = [](void*, void* context)
        {
            ++*static_cast<std::atomic<int>*>(context);
        };
        for (int i = 0; i < 3; ++i)
            SubmitThreadpoolWork(pool.Make(&Hold, &held));
        ASSERT_TRUE(WaitFor(held.begun, 3));
        const Thread releasing(
            [&held]
            {
                Sleep(30);
                SetEvent(held.go);
                return 0u;
            });
        CloseThreadpoolCleanupGroupMembers(pool.environment.CleanupGroup, cancels, &cancelled);
        EXPECT_EQ(held.ended, 3);
        EXPECT_EQ(cancelled, cancels ? 3 : 0);
        EXPECT_EQ(releasing.Join(), 0u);
    }
}

TEST(ThreadPools, UnderLoad)
{
    std::atomic<int> count = 0;
    std::vector<Thread> threads;
    for (int i = 0; i < 3; ++i)
        threads.emplace_back(
            [&count]
            {
                for (int round = 0; round < 20; ++round)
                {
                    Pool pool;
                    for (int item = 0; item < 10; ++item)
                        SubmitThreadpoolWork(pool.Make(&Count, &count));
                }
                return 0u;
            });
    for (const Thread& thread : threads)
        EXPECT_EQ(thread.Join(), 0u);
    EXPECT_EQ(count, 3 * 20 * 10);
}

class Port : public Handle
{
public:
    Port() : Handle(CreateIoCompletionPort(INVALID_HANDLE_VALUE, nullptr, 0, 0)) {}

    bool Post(DWORD withBytes, ULONG_PTR withKey, void* record = nullptr) const
    {
        return PostQueuedCompletionStatus(*this, withBytes, withKey, static_cast<OVERLAPPED*>(record)) != FALSE;
    }
};

struct Packet
{
    bool Get(HANDLE port, DWORD milliseconds)
    {
        return GetQueuedCompletionStatus(port, &bytes, &key, &overlapped, milliseconds) != FALSE;
    }

    DWORD bytes = 0xBEEF;
    ULONG_PTR key = 0xBEEF;
    OVERLAPPED* overlapped = nullptr;
};

TEST(CompletionPorts, PacketsInTheirOrder)
{
    const Port port;
    ASSERT_TRUE(port);
    int record;
    ASSERT_TRUE(port.Post(8, 0));
    ASSERT_TRUE(port.Post(0xFFFFFFFF, ~ULONG_PTR{0}, &record));
    Packet packet;
    EXPECT_TRUE(packet.Get(port, 0));
    EXPECT_TRUE(packet.bytes == 8 && packet.key == 0 && packet.overlapped == nullptr);
    EXPECT_TRUE(packet.Get(port, INFINITE));
    EXPECT_TRUE(packet.bytes == 0xFFFFFFFF && packet.key == ~ULONG_PTR{0});
    EXPECT_EQ(static_cast<void*>(packet.overlapped), &record);

    const ULONGLONG begin = GetTickCount64();
    EXPECT_EQ(ErrorOf([&] { return packet.Get(port, 50); }), DWORD{WAIT_TIMEOUT});
    EXPECT_GE(GetTickCount64() - begin, 45u);
    EXPECT_EQ(packet.overlapped, nullptr);
    EXPECT_EQ(ErrorOf([&] { return packet.Get(nullptr, 0); }), DWORD{ERROR_INVALID_HANDLE});
}

TEST(CompletionPorts, AWaitingThreadCanBeStopped)
{
    const LeaksAllowed leaksAllowed;
    const Port port;
    const auto wait = [&port]
    {
        Packet packet;
        return packet.Get(port, INFINITE) && packet.bytes == 7 ? 0u : 1u;
    };
    const Thread first(wait);
    Sleep(30);
    EXPECT_TRUE(TerminateThread(first, 5));
    EXPECT_EQ(first.Join(), 5u);

    const Thread second(wait);
    Sleep(30);
    EXPECT_EQ(SuspendThread(second), 0u);
    EXPECT_TRUE(port.Post(7, 0));
    EXPECT_EQ(WaitForSingleObject(second, 50), DWORD{WAIT_TIMEOUT});
    EXPECT_EQ(ResumeThread(second), 1u);
    EXPECT_EQ(second.Join(), 0u);
}

// What a container shares out counts for the layer, not what the machine has.
#if defined(__linux__)
TEST(Processors, ByAffinity)
{
    cpu_set_t before, one;
    ASSERT_EQ(sched_getaffinity(0, sizeof before, &before), 0);
    int processor = 0;
    while (!CPU_ISSET(processor, &before))
        ++processor;
    CPU_ZERO(&one);
    CPU_SET(processor, &one);
    ASSERT_EQ(sched_setaffinity(0, sizeof one, &one), 0);
    DWORD_PTR own = 0, system = 0;
    EXPECT_TRUE(GetProcessAffinityMask(GetCurrentProcess(), &own, &system));
    EXPECT_EQ(std::popcount(own), 1);
    EXPECT_EQ(GetActiveProcessorCount(ALL_PROCESSOR_GROUPS), 1u);
    sched_setaffinity(0, sizeof before, &before);
}
#endif

} // namespace
