#include "diag/debug_channels.h"

#include "core/debug_line.h"
#include "core/thread_names.h"
#include "debug_support.h"
#include "support/leaks_allowed.h"
#include "threads/event.h"

#include <process.h>

#include <gmock/gmock.h>

#include <atomic>
#include <cstdlib>
#include <thread>

using namespace qx;
using namespace qxtest;
using testing::ElementsAre;

TEST(DebugChannels, FormsOfLines)
{
    OwnOutput output;
    TheThreadNames().Enter(GetCurrentThreadId(), "Worker");
    output.Write(nullptr, 0, L"%s, %hs, %ws and %d%%", L"wide", "narrow", L"wide", 7);
    output.Write(L"", 0, L"no tag");
    output.Write(L"PROF", 1, L"INIT\u25A0>state %d", 1);
    output.Write(L"NINECHARS", 0, L"%d\u25A0second\u25A0third");
    output.Write(L"PROF", 0, L"\u25A0no section");
    TheThreadNames().Remove(GetCurrentThreadId(), TheThreadNames().Find(GetCurrentThreadId()));
    output.Write(L"EIGHTCHR", 0, L"");

    EXPECT_THAT(
        output.Rests(), ElementsAre("[Worker] wide, narrow, wide and 7%", "[Worker] no tag", "INIT [Worker] >state 1",
                            "%d  [Worker] second?third", " [Worker] no section", " "));
    std::vector<std::string> tags;
    std::string digits;
    char thread[9];
    snprintf(thread, sizeof thread, "%08x", static_cast<unsigned>(GetCurrentThreadId()));
    for (const std::string& line : output.Lines())
    {
        tags.push_back(Parse(line).tag);
        digits += Parse(line).digit;
        EXPECT_EQ(Parse(line).thread, thread);
    }
    EXPECT_THAT(tags, ElementsAre("", "", "PROF    : ", "NINECHARS: ", "PROF    : ", "EIGHTCHR: "));
    EXPECT_EQ(digits, "012345");
}

TEST(DebugChannels, DepthByItsRules)
{
    OwnOutput output;
    const auto write = [&](std::initializer_list<std::pair<int, const wchar_t*>> lines)
    {
        for (const auto& [change, text] : lines)
            output.Write(nullptr, change, text);
    };
    // Only the sign of the change counts, and the nesting may change without a line.
    write({{5, L">enter"}, {0, L"inside"}, {1, nullptr}, {0, L"deeper"}, {0, nullptr}, {-7, L"<leave"}, {-1, nullptr},
        {0, L"outside"}, {-1, L"<below"}, {-1, L"<below"}});
    EXPECT_EQ(output.channels.Depth(), -2);
    write({{1, L">still below"}, {1, L">on the ground"}, {1, L">again"}, {0, L"above"}});
    EXPECT_THAT(output.Rests(), ElementsAre(">enter", " inside", "  deeper", " <leave", "outside", "<below", "<below",
                                    ">still below", ">on the ground", ">again", " above"));
}

TEST(DebugChannels, DepthIsClampedForTheLineAlone)
{
    OwnOutput output;
    for (int i = 0; i < 60; ++i)
        output.Write(nullptr, 1, L">");
    EXPECT_EQ(output.channels.Depth(), 60);
    for (int i = 0; i < 11; ++i)
        output.Write(nullptr, -1, L"<");
    const std::vector<std::string> rests = output.Rests();
    ASSERT_EQ(rests.size(), 71u);
    EXPECT_EQ(rests[59], std::string(50, ' ') + ">");
    EXPECT_EQ(rests[69], std::string(50, ' ') + "<");
    EXPECT_EQ(rests[70], std::string(49, ' ') + "<");
}

TEST(DebugChannels, LongLinesAreCut)
{
    OwnOutput output;
    const String text = Filled(L'x', 2000);
    output.Write(L"TAG", 0, L"%s", text.Text());
    output.Write(text.Text(), 0, L"not reached");
    output.Write(nullptr, 0, L"%s\u25A0", L"");
    output.Write(nullptr, 0, (text + L"\u25A0not reached").Text());
    const std::vector<std::string> lines = output.Lines();
    ASSERT_EQ(lines.size(), 4u);
    for (const std::size_t i : {0, 1, 3})
    {
        EXPECT_EQ(lines[i].size(), 1024u);
        EXPECT_TRUE(lines[i].ends_with("xxx")) << lines[i];
    }
    EXPECT_TRUE(lines[0].starts_with("TAG     : "));
    EXPECT_TRUE(lines[2].ends_with("%s "));
}

TEST(DebugChannels, WithoutASinkNothingIsTouched)
{
    clsDebugChannels channels;
    EXPECT_FALSE(channels.IsActive());
    EXPECT_FALSE(UtilIsDebugActive());
    DebugLine(reinterpret_cast<const wchar_t*>(1)); // must not be read
    DebugLineIndent(1, L">");
    {
        OwnOutput output;
        EXPECT_TRUE(UtilIsDebugActive());
        DebugLineIndent(1, L">%hs", "in");
        SetLastError(4711);
        errno = 42;
        DebugLine(L"line");
        EXPECT_EQ(errno, 42);
        EXPECT_EQ(GetLastError(), 4711u);
        output.channels.Close();
        EXPECT_FALSE(UtilIsDebugActive());
        DebugLineIndent(1, L">lost");
        output.Write(nullptr, 1, L">lost too");
        EXPECT_EQ(output.channels.Depth(), 1);
        EXPECT_THAT(output.Rests(), ElementsAre(">in", " line"));
    }
}

// The system may have terminated a thread while it held the lock.
TEST(DebugChannels, CloseDoesNotWaitForEver)
{
    OwnOutput output;
    std::thread writer;
    {
        const HANDLE keeper =
            CreateFileW(output.path.Text(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
        ASSERT_NE(keeper, INVALID_HANDLE_VALUE);
        writer = std::thread(
            [&]
            {
                for (int i = 0; i < 10; ++i)
                    output.Write(nullptr, 0, L"line"); // each takes a tenth of a second as long as there is a log file
            });
        Sleep(20);
        const ULONGLONG begin = GetTickCount64();
        output.channels.Close([] { DebugLine(L"the last one"); });
        EXPECT_LT(GetTickCount64() - begin, 600u);
        CloseHandle(keeper);
    }
    writer.join();
    EXPECT_FALSE(UtilIsDebugActive());
}

#ifndef _WIN32 // the system ends a thread anywhere, even inside the lock
TEST(DebugChannels, AThreadThatIsTerminatedWhileItTracesLeavesNoLock)
{
    OwnOutput output;
    for (int round = 0; round < 30; ++round)
    {
        std::atomic<int> count = 0;
        const auto trace = [](void* lines) -> unsigned
        {
            const LeaksAllowed leaksAllowed;
            for (auto& written = *static_cast<std::atomic<int>*>(lines);; ++written)
                DebugLine(L"line %d", written.load());
        };
        const clsGenericHandleObjectAutoRelease thread(
            reinterpret_cast<HANDLE>(_beginthreadex(nullptr, 0, trace, &count, 0, nullptr)), true);
        while (count < 3)
            Sleep(1);
        ASSERT_TRUE(TerminateThread(thread.Get(), 0));
        if (WaitForSingleObject(thread.Get(), 20'000) != WAIT_OBJECT_0)
            std::abort(); // otherwise the thread would go on using objects of the finished test
        output.Write(nullptr, 0, L"still there");
    }
    std::size_t closing = 0;
    for (const std::string& line : output.Lines())
        closing += line.ends_with("still there");
    EXPECT_EQ(closing, 30u);
}
#endif
