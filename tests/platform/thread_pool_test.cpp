// The system's thread pool, completion ports, and the processors of the process.
#include "threads_support.h"

#include <bit>

// Each system has its own function to set the affinity. Only the layer's GetActiveProcessorCount depends on it.
#if defined(__linux__)
#include <sched.h>
#endif

using namespace qxtest;

namespace
{

TEST(ThreadPools, UnderLoad)
{
    std::atomic<int> count = 0;
    const auto submit = [&count]
    {
        for (int round = 0; round < 20; ++round)
        {
            TP_CALLBACK_ENVIRON environment{};
            environment.Version = 1;
            environment.Pool = CreateThreadpool(nullptr);
            environment.CleanupGroup = CreateThreadpoolCleanupGroup();
            const PTP_WORK_CALLBACK add = [](PTP_CALLBACK_INSTANCE, void* context, PTP_WORK)
            {
                ++*static_cast<std::atomic<int>*>(context);
            };
            for (int item = 0; item < 10; ++item)
                SubmitThreadpoolWork(CreateThreadpoolWork(add, &count, &environment));
            CloseThreadpoolCleanupGroupMembers(environment.CleanupGroup, FALSE, nullptr);
            CloseThreadpoolCleanupGroup(environment.CleanupGroup);
            CloseThreadpool(environment.Pool);
        }
        return 0u;
    };
    const Thread first(submit), second(submit), third(submit);
    for (const Thread* thread : {&first, &second, &third})
        EXPECT_EQ(thread->Join(), 0u);
    EXPECT_EQ(count, 3 * 20 * 10);
}

TEST(CompletionPorts, AWaitingThreadCanBeTerminated)
{
    const LeaksAllowed leaksAllowed;
    const Handle port(CreateIoCompletionPort(INVALID_HANDLE_VALUE, nullptr, 0, 0));
    const auto take = [&port]
    {
        DWORD bytes = 0;
        ULONG_PTR key = 0;
        OVERLAPPED* overlapped = nullptr;
        return GetQueuedCompletionStatus(port, &bytes, &key, &overlapped, INFINITE) ? static_cast<unsigned>(bytes) : 0u;
    };
    const Thread thread(take);
    Sleep(30);
    EXPECT_TRUE(TerminateThread(thread, 5));
    EXPECT_EQ(thread.Join(), 5u);
    EXPECT_TRUE(PostQueuedCompletionStatus(port, 7, 0, nullptr));
    EXPECT_EQ(take(), 7u);
}

// The layer counts the processors assigned to a container rather than those of the machine.
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
