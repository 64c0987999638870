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
                if (!Packet().Get(port, patience))
                    return 1u;
                ++taken;
                return WaitForSingleObject(go, patience) == WAIT_OBJECT_0 ? 0u : 2u;
            });
    Sleep(30);
    for (int i = 0; i < count; ++i)
        port.Post(0, 0);
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

} // namespace
