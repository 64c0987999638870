// The output that a monitor receives.
#include "diag/debug_monitor.h"

#include "core/thread_names.h"
#include "debug_support.h"

#include <gmock/gmock.h>

using namespace qx;
using namespace qxtest;
using testing::ElementsAre;
using testing::IsEmpty;

namespace
{

class FakeMonitor : public DebugMonitor
{
public:
    void Search() override { ++searches; }
    bool IsRecording() const override { return isRecording; }
    bool HasData() const override { return hasData; }
    bool IsDataOpen() const override { return isDataOpen; }
    void SendData(
        const wchar_t* tag, int first, int second, int depth, const wchar_t* text, std::size_t length) override
    {
        EXPECT_EQ(wcslen(text), length);
        sent.push_back(String(String::kFormatted, L"%s %d %d %d %s", tag ? tag : L"-", first, second, depth, text));
    }
    unsigned CodePage() const override { return codePage; }
    void SendText(const char* text) override
    {
        sent.push_back(String(String::kFormatted, L"%hs", text));
        if (isTalkative)
            DebugLineIndent(1, L">sent");
    }

    int searches = 0;
    bool isRecording = true, hasData = false, isDataOpen = false, isTalkative = false;
    unsigned codePage = CP_UTF8;
    std::vector<String> sent;
};

class DebugMonitorTest : public testing::Test
{
protected:
    DebugMonitorTest() { output.channels.SetMonitor(&monitor); }
    ~DebugMonitorTest() override { output.channels.Close(); }

    std::vector<std::string> Rests() const
    {
        std::vector<std::string> rests;
        for (const String& line : monitor.sent)
            rests.push_back(Parse(std::string(line.NarrowText())).rest);
        return rests;
    }

    FakeMonitor monitor;
    OwnOutput output;
};

} // namespace

TEST_F(DebugMonitorTest, LogFileAndTextGetEveryLine)
{
    output.Write(L"TAG", 1, L">enter");
    output.Write(L"TAG", 0, L"inside");
    monitor.hasData = true; // until the channel is open, lines are sent in the form of the log
    output.Write(L"TAG", 0, L"data");
    EXPECT_THAT(Rests(), ElementsAre(">enter", " inside", " data"));
    EXPECT_EQ(output.Rests(), Rests());
    EXPECT_THAT(std::string(monitor.sent[2].NarrowText()), testing::StartsWith("- 1 0 0 TAG     : "));
    EXPECT_EQ(monitor.searches, 0); // with a log file, the output needn't search for a monitor
}

TEST_F(DebugMonitorTest, OpenDataGetsTheMessageAlone)
{
    monitor.hasData = monitor.isDataOpen = true;
    TheThreadNames().Enter(GetCurrentThreadId(), "Worker");
    output.Write(L"TAG", 1, L"INIT\u25A0>enter %d", 1);
    TheThreadNames().Remove(GetCurrentThreadId(), TheThreadNames().Find(GetCurrentThreadId()));
    output.Write(nullptr, 1, L""); // an empty text only increases the counter
    output.Write(nullptr, 0, L"");
    output.Write(nullptr, -1, L"<leave");
    EXPECT_THAT(monitor.sent,
        ElementsAre(String(L"TAG 1 0 0 [Worker] INIT\u25A0>enter 1"), String(L"- 1 0 2 "), String(L"- 1 0 1 <leave")));
    EXPECT_EQ(output.Rests().size(), 4u);
}

TEST_F(DebugMonitorTest, WhatIsNotRecordedIsNotCounted)
{
    output.channels.SetLogFile(DebugLogFile());
    for (const bool isData : {false, true})
    {
        monitor.hasData = monitor.isDataOpen = isData;
        monitor.isRecording = false;
        EXPECT_FALSE(UtilIsDebugActive());
        output.Write(nullptr, 1, L">lost");
        EXPECT_EQ(output.channels.Depth(), 0);
    }
    EXPECT_THAT(monitor.sent, IsEmpty());
    EXPECT_GE(monitor.searches, 4);
    monitor.isRecording = true;
    DebugLine(L"sent");
    EXPECT_THAT(monitor.sent, ElementsAre(String(L"- 1 0 0 sent")));
}

TEST_F(DebugMonitorTest, ALineOutOfAnotherIsDropped)
{
    monitor.isTalkative = true;
    output.Write(nullptr, 0, L"first");
    output.Write(nullptr, 0, L"second");
    EXPECT_THAT(Rests(), ElementsAre("first", " second")); // the nesting of dropped lines counts
    EXPECT_EQ(output.Rests(), Rests());
}

TEST_F(DebugMonitorTest, WhatCanNotBeConvertedIsForTheLogAlone)
{
    monitor.codePage = 12345;
    output.Write(nullptr, 0, L"line");
    EXPECT_THAT(monitor.sent, IsEmpty());
    EXPECT_THAT(output.Rests(), ElementsAre("line"));
}
