// Events, waits for several objects, message queues, message boxes.
#include "threads_support.h"

#include <array>
#include <chrono>
#include <thread>
#include <vector>

using namespace qxtest;

namespace
{

using Clock = std::chrono::steady_clock;

template <size_t count>
DWORD Wait(const std::array<HANDLE, count>& handles, DWORD milliseconds)
{
    return WaitForMultipleObjects(static_cast<DWORD>(count), handles.data(), FALSE, milliseconds);
}

TEST(Waits, TheFirstOfThoseThatAreSetCounts)
{
    const Event first(false), second(false), third(true);
    const std::array<HANDLE, 3> all = {first, second, third};
    EXPECT_EQ(Wait(all, 0), DWORD{WAIT_TIMEOUT});
    SetEvent(third);
    SetEvent(second);
    EXPECT_EQ(Wait(all, 0), WAIT_OBJECT_0 + 1);
    EXPECT_EQ(Wait(all, 0), WAIT_OBJECT_0 + 2);
    EXPECT_EQ(Wait(all, 0), WAIT_OBJECT_0 + 2) << "which stays set";
}

TEST(Waits, WhatCantBeWaitedForAndWhatNeverComes)
{
    const Event event;
    const std::array<HANDLE, 2> handles = {event, nullptr};
    EXPECT_EQ(ErrorOf([&] { return Wait(handles, 0) != WAIT_FAILED; }), DWORD{ERROR_INVALID_HANDLE});
    std::array<HANDLE, 65> many;
    many.fill(event);
    EXPECT_EQ(ErrorOf([&] { return Wait(many, 0) != WAIT_FAILED; }), DWORD{ERROR_INVALID_PARAMETER});
    const auto begin = Clock::now();
    EXPECT_EQ(WaitForSingleObject(event, 60), DWORD{WAIT_TIMEOUT});
    EXPECT_EQ(SleepEx(60, TRUE), 0u);
    EXPECT_GE(Clock::now() - begin, std::chrono::milliseconds(110));
}

TEST(Waits, EachSettingOfAnAutomaticEventLetsOneThreadThrough)
{
    const Event event(false), stop;
    std::atomic<int> passed = 0;
    std::vector<std::unique_ptr<Thread>> threads;
    for (int index = 0; index < 4; ++index)
        threads.push_back(std::make_unique<Thread>(
            [&]
            {
                const std::array<HANDLE, 2> both = {stop, event};
                while (Wait(both, INFINITE) == WAIT_OBJECT_0 + 1)
                    ++passed;
                return 0u;
            }));
    for (int count = 1; count <= 200; ++count)
    {
        SetEvent(event);
        const auto end = Clock::now() + std::chrono::seconds(20);
        while (passed < count && Clock::now() < end)
            std::this_thread::yield();
        ASSERT_EQ(passed, count);
    }
    SetEvent(stop);
    for (const auto& thread : threads)
        thread->Join();
    EXPECT_EQ(passed, 200);
}

// In a thread of its own, so that it begins with an empty queue.
TEST(Messages, WaitsWakeForNewInput)
{
    const Thread thread(
        []
        {
            MSG message;
            PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);
            const Event event;
            const HANDLE handle = event;
            const DWORD self = GetCurrentThreadId();
            EXPECT_EQ(MsgWaitForMultipleObjects(1, &handle, FALSE, 0, QS_ALLINPUT), DWORD{WAIT_TIMEOUT});
            PostThreadMessageW(self, WM_APP, 0, 0);
            EXPECT_EQ(MsgWaitForMultipleObjects(1, &handle, FALSE, 0, QS_ALLINPUT), WAIT_OBJECT_0 + 1);
            SetEvent(event);
            EXPECT_EQ(MsgWaitForMultipleObjects(1, &handle, FALSE, 0, QS_ALLINPUT), DWORD{WAIT_OBJECT_0});
            ResetEvent(event);
            // What was looked at, without taking it, is not new.
            EXPECT_TRUE(PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE));
            EXPECT_EQ(MsgWaitForMultipleObjects(1, &handle, FALSE, 0, QS_ALLINPUT), DWORD{WAIT_TIMEOUT});

            const Thread poster(
                [self]
                {
                    Sleep(30);
                    PostThreadMessageW(self, WM_APP, 0, 0);
                    return 0u;
                });
            EXPECT_EQ(MsgWaitForMultipleObjectsEx(0, nullptr, patience, QS_POSTMESSAGE, 0), DWORD{WAIT_OBJECT_0});
            poster.Join();
            return 0u;
        });
    thread.Join();
}

TEST(Messages, BoxesAnswerByThemselves)
{
    if (!isLayer) // the system's boxes wait for someone
        GTEST_SKIP();
    struct
    {
        UINT style;
        const wchar_t* wanted;
        int answer;
    } constexpr cases[] = {
        {MB_OKCANCEL | MB_DEFBUTTON2 | MB_ICONHAND | MB_TASKMODAL | MB_SETFOREGROUND, nullptr, IDCANCEL},
        {MB_YESNOCANCEL | MB_DEFBUTTON3, L"", IDCANCEL}, {MB_YESNO, L"No", IDNO},
        {MB_YESNO | MB_DEFBUTTON3, L"cancel", IDYES}, {MB_CANCELTRYCONTINUE, L"continue", IDCONTINUE},
        {MB_TYPEMASK, L"ok", 0}};
    for (const auto& entry : cases)
    {
        SetEnvironmentVariableW(L"QXPLATFORM_MESSAGEBOX", entry.wanted);
        testing::internal::CaptureStderr();
        EXPECT_EQ(MessageBoxW(nullptr, L"A\x00E4 text", L"Caption", entry.style), entry.answer);
        const std::string printed = testing::internal::GetCapturedStderr();
        EXPECT_EQ(printed.find("Caption: A\xC3\xA4 text [") == 0, entry.answer != 0) << printed;
    }
    SetEnvironmentVariableW(L"QXPLATFORM_MESSAGEBOX", nullptr);
}

} // namespace
