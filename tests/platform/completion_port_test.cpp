// Completion ports.
#include "threads_support.h"

#include <atomic>
#include <thread>
#include <vector>

using namespace qxtest;

namespace
{

class Port : public Handle
{
public:
    Port() : Handle(CreateIoCompletionPort(INVALID_HANDLE_VALUE, nullptr, 0, 0)) {}

    bool Post(DWORD withBytes, ULONG_PTR withKey, void* record) const
    {
        return PostQueuedCompletionStatus(*this, withBytes, withKey, static_cast<OVERLAPPED*>(record)) != FALSE;
    }

    bool Get(DWORD milliseconds)
    {
        return GetQueuedCompletionStatus(*this, &bytes, &key, &overlapped, milliseconds) != FALSE;
    }

    DWORD bytes = 0xBEEF;
    ULONG_PTR key = 0xBEEF;
    OVERLAPPED* overlapped = nullptr;
};

TEST(CompletionPorts, PacketsInTheirOrder)
{
    Port port;
    ASSERT_TRUE(port);
    int records[2];
    ASSERT_TRUE(port.Post(8, 0, &records[0]));
    ASSERT_TRUE(port.Post(0xFFFFFFFF, ~ULONG_PTR{0}, &records[1]));
    ASSERT_TRUE(port.Post(0, 0, nullptr));
    EXPECT_TRUE(port.Get(0));
    EXPECT_TRUE(port.bytes == 8 && port.key == 0 && static_cast<void*>(port.overlapped) == &records[0]);
    EXPECT_TRUE(port.Get(INFINITE));
    EXPECT_TRUE(port.bytes == 0xFFFFFFFF && port.key == ~ULONG_PTR{0});
    EXPECT_EQ(static_cast<void*>(port.overlapped), &records[1]);
    EXPECT_TRUE(port.Get(0));
    EXPECT_EQ(port.overlapped, nullptr);

    const ULONGLONG begin = GetTickCount64();
    port.bytes = 5;
    port.overlapped = reinterpret_cast<OVERLAPPED*>(records);
    EXPECT_EQ(ErrorOf([&] { return port.Get(50); }), DWORD{WAIT_TIMEOUT});
    EXPECT_GE(GetTickCount64() - begin, 45u);
    EXPECT_EQ(port.overlapped, nullptr);
    EXPECT_EQ(port.bytes, 5u);
}

TEST(CompletionPorts, WhatIsNone)
{
    const auto create = [](HANDLE file, HANDLE existing)
    {
        return ErrorOf([=] { return CreateIoCompletionPort(file, existing, 0, 1) != nullptr; });
    };
    Port port;
    EXPECT_EQ(create(INVALID_HANDLE_VALUE, port), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(create(nullptr, nullptr), DWORD{ERROR_INVALID_HANDLE});
    const Event event;
    DWORD bytes = 0;
    ULONG_PTR key = 0;
    OVERLAPPED* overlapped = nullptr;
    for (const HANDLE handle : {HANDLE{event}, HANDLE{nullptr}})
    {
        EXPECT_EQ(ErrorOf([&] { return GetQueuedCompletionStatus(handle, &bytes, &key, &overlapped, 0); }),
            DWORD{ERROR_INVALID_HANDLE});
        EXPECT_EQ(
            ErrorOf([&] { return PostQueuedCompletionStatus(handle, 0, 0, nullptr); }), DWORD{ERROR_INVALID_HANDLE});
    }
}

TEST(CompletionPorts, ClosingEndsTheWaits)
{
    if (!isLayer)
        GTEST_SKIP() << "documented, but Wine leaves them waiting";
    Port port;
    std::atomic<DWORD> error = 0;
    const Thread waiting(
        [&]
        {
            error = ErrorOf([&] { return port.Get(patience); });
            return 0u;
        });
    Sleep(50);
    port.Close();
    EXPECT_EQ(waiting.Join(), 0u);
    EXPECT_EQ(error, DWORD{ERROR_ABANDONED_WAIT_0});
}

// A thread that works doesn't keep a packet from one that waits.
TEST(CompletionPorts, EachPacketFindsAWaitingThread)
{
    Port port;
    const Event go;
    std::atomic<int> taken = 0;
    std::vector<Thread> threads;
    constexpr int count = 4;
    for (int i = 0; i < count; ++i)
        threads.emplace_back(
            [&]
            {
                Port& shared = port;
                DWORD bytes = 0;
                ULONG_PTR key = 0;
                OVERLAPPED* overlapped = nullptr;
                if (!GetQueuedCompletionStatus(shared, &bytes, &key, &overlapped, patience))
                    return 1u;
                ++taken;
                return WaitForSingleObject(go, patience) == WAIT_OBJECT_0 ? 0u : 2u;
            });
    Sleep(30);
    for (int i = 0; i < count; ++i)
        port.Post(0, 0, nullptr);
    const ULONGLONG end = GetTickCount64() + patience;
    while (taken < count && GetTickCount64() < end)
        Sleep(1);
    EXPECT_EQ(taken, count);
    SetEvent(go);
    for (const Thread& thread : threads)
        EXPECT_EQ(thread.Join(), 0u);
}

TEST(CompletionPorts, AWaitingThreadCanBeStopped)
{
    const LeaksAllowed leaksAllowed;
    const Port port;
    const auto wait = [&port]
    {
        DWORD bytes = 0;
        ULONG_PTR key = 0;
        OVERLAPPED* overlapped = nullptr;
        return GetQueuedCompletionStatus(port, &bytes, &key, &overlapped, INFINITE) && bytes == 7 ? 0u : 1u;
    };
    const Thread first(wait);
    Sleep(30);
    EXPECT_TRUE(TerminateThread(first, 5));
    EXPECT_EQ(first.Join(), 5u);

    const Thread second(wait);
    Sleep(30);
    EXPECT_EQ(SuspendThread(second), 0u);
    EXPECT_TRUE(port.Post(7, 0, nullptr));
    EXPECT_EQ(WaitForSingleObject(second, 50), DWORD{WAIT_TIMEOUT});
    EXPECT_EQ(ResumeThread(second), 1u);
    EXPECT_EQ(second.Join(), 0u);
}

TEST(CompletionPorts, ManyPostAndTake)
{
    constexpr DWORD postersCount = 3, takersCount = 3, packets = 5'000;
    Port port;
    std::atomic<unsigned long long> sum = 0;
    std::vector<Thread> takers, posters;
    for (DWORD i = 0; i < takersCount; ++i)
        takers.emplace_back(
            [&]
            {
                DWORD bytes = 0;
                ULONG_PTR key = 0;
                OVERLAPPED* overlapped = nullptr;
                while (GetQueuedCompletionStatus(port, &bytes, &key, &overlapped, patience) && key != 0)
                    sum += bytes;
                return key == 0 ? 0u : 1u;
            });
    for (DWORD i = 0; i < postersCount; ++i)
        posters.emplace_back(
            [&]
            {
                for (DWORD packet = 1; packet <= packets; ++packet)
                    port.Post(packet, 1, nullptr);
                return 0u;
            });
    for (const Thread& poster : posters)
        poster.Join();
    for (DWORD i = 0; i < takersCount; ++i)
        port.Post(0, 0, nullptr);
    for (const Thread& taker : takers)
        EXPECT_EQ(taker.Join(), 0u);
    EXPECT_EQ(sum, postersCount * (packets * (packets + 1ull) / 2));
}

} // namespace
