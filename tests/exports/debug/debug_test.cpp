// The library's debug output as seen by a program that loads it: through the log file named in the settings.
#include "module/module_paths.h"
#include "support/developer_run.h"
#include "support/log_lines.h"
#include "support/peer_process.h"
#include "support/temp_folder.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <memory>
#include <set>

using namespace qx;
using namespace qxtest;
using namespace testing;

namespace
{

class DebugExports : public testing::Test
{
protected:
    // Runs the peer with the log file and the given settings and command.
    int Run(const String& rest) { return PeerProcess(L"debug_peer", WithLog(rest)).Wait(); }
    String WithLog(const String& rest) const
    {
        return String(String::kFormatted, L"\"Debug.LogFilename=%s\" %s", log.Text(), rest.Text());
    }

    const TempFolder folder;
    const String log = folder.Path(L"trace.log");
};

// Returns the lines between the opening and the closing line of the process, each with its tag before its rest.
std::vector<std::string> InnerLines(const String& log)
{
    std::vector<std::string> inner;
    const std::vector<std::string> lines = LogLines(log);
    for (std::size_t i = 1; i + 1 < lines.size(); ++i)
    {
        const LogLine line = Parse(lines[i]);
        inner.push_back(line.time.empty() ? "(no stamp) " + lines[i] : line.tag + line.rest);
    }
    return inner;
}

} // namespace

TEST_F(DebugExports, FormsOfLines)
{
    ASSERT_EQ(Run(L"forms"), 0);
    EXPECT_THAT(InnerLines(log),
        ElementsAre("wide narrow 5000000000", "PROF    : >INIT x", "PROF    : INIT  state 1", " %s and 100%",
            AllOf(StartsWith(" \nQV32UTIL['']: error in 'place' (thing): "), EndsWith("\n"), SizeIs(Gt(44u))),
            "<leave"));
}

TEST_F(DebugExports, CallersAndModules)
{
    ASSERT_EQ(Run(L"stacks"), 0);
    const std::vector<std::string> lines = InnerLines(log);
    ASSERT_GT(lines.size(), 6u);
    EXPECT_EQ(lines[0], "\n");
    EXPECT_THAT(lines[1], AllOf(StartsWith("\n [called by "), HasSubstr("qxUT23.")));
    EXPECT_THAT(lines[2], AllOf(StartsWith("\n [called by "), HasSubstr("debug_peer")));
    const auto end = std::find(lines.begin() + 3, lines.end(), "\n");
    ASSERT_GT(lines.end() - end, 3);
    EXPECT_EQ(end[1], "        :Memory image addresses of modules:\n");
    for (const char* const module : {"debug_peer", "qxUT23."})
        EXPECT_EQ(std::count_if(end + 2, lines.end(),
                      [module](const std::string& line)
                      { return line.starts_with("        : 0x") && line.find(module) != line.npos; }),
            1)
            << module;
}

TEST_F(DebugExports, TheProcessIsOpenedAndClosed)
{
    ASSERT_EQ(Run(L"twice"), 0);
    const std::vector<std::string> lines = LogLines(log);
    ASSERT_EQ(lines.size(), 4u);
    const std::string folderText(ProcessPaths().directory.NarrowText()); // folder of both the peer and the library
    for (const std::size_t i : {0, 1, 2, 3})
    {
        const std::string rest = Parse(lines[i]).rest;
        EXPECT_THAT(rest, AllOf(StartsWith(i % 2 == 0 ? "++" : "--"), HasSubstr("QXUT23."), HasSubstr(" 23.2.0 "),
                              HasSubstr("[" + folderText + "DEBUG_PEER")));
        EXPECT_EQ(rest.ends_with("] [" + folderText + "]"), i % 2 == 0) << rest;
        EXPECT_EQ(Parse(lines[i]).digit, "0101"[i]);
    }
}

// In a developer's run, the report includes the callers. While the library is being unloaded, its debug-help session
// has no thread.
TEST_F(DebugExports, HandlesLeftAtTheEnd)
{
    ASSERT_EQ(Run(L"lost"), 0);
    EXPECT_THAT(InnerLines(log), ElementsAre(AllOf(StartsWith("LOST PEN HANDLE 0"), EndsWith("1234:"))));
    DeleteFileW(log);
    const UserIs user(L"qvx");
    for (const wchar_t* const command : {L"lost", L"lost kept"})
    {
        ASSERT_EQ(Run(command), 0);
        const std::vector<std::string> lines = InnerLines(log);
        ASSERT_THAT(lines, SizeIs(Gt(3u)));
        EXPECT_THAT(lines[0], StartsWith("LOST PEN HANDLE 0"));
        EXPECT_THAT(lines[1], AllOf(StartsWith("  [0x"), AnyOf(HasSubstr("qxUT23!"), HasSubstr("qxut23!"))));
        EXPECT_THAT(lines, Contains(AllOf(StartsWith("  [0x"), HasSubstr("debug_peer"), HasSubstr("LeaveHandle + 0x"),
                               HasSubstr("debug_peer.cpp, line "))));
        DeleteFileW(log);
    }
}

// The peer was started with a log, which it keeps although its setting changes.
TEST_F(DebugExports, SettingOfTheLog)
{
    ASSERT_EQ(Run(L"setting"), 0);
    EXPECT_EQ(LogLines(log).size(), 2u);
}

TEST_F(DebugExports, LinesOfManyThreadsAndProcesses)
{
    constexpr int kProcesses = 4, kThreads = 8, kLinesOfThread = 100;
    {
        std::vector<std::unique_ptr<PeerProcess>> peers;
        for (int process = 0; process < kProcesses; ++process)
            peers.push_back(std::make_unique<PeerProcess>(
                L"debug_peer", WithLog(String(String::kFormatted, L"lines p%d", process))));
        for (const auto& peer : peers)
            EXPECT_EQ(peer->Wait(), 0);
    }
    std::set<std::string> missing;
    for (int i = 0; i < kProcesses * kThreads * kLinesOfThread; ++i)
    {
        const int process = i % kProcesses, thread = i / kProcesses % kThreads, line = i / kProcesses / kThreads;
        const String text(String::kFormatted, L"p%d %d %d %0*d.", process, thread, line, 20 + line % 50, 0);
        missing.emplace(text.NarrowText());
    }
    const std::size_t all = missing.size();
    for (const std::string& text : LogLines(log))
    {
        const LogLine line = Parse(text);
        EXPECT_TRUE(missing.erase(line.rest) == 1 || line.rest.starts_with("++") || line.rest.starts_with("--"))
            << text;
    }
    // A line is lost if the file was in use for a tenth of a second, which is rare.
    RecordProperty("lost", static_cast<int>(missing.size()));
    EXPECT_LE(missing.size(), all / 50);
}

// If no log file is set or none can be created, the library still loads and its functions return.
TEST_F(DebugExports, WhereThereIsNoLogFile)
{
    for (const wchar_t* const setting : {L"Debug.LogFile.Flush=T off", L"Debug.LogFilename= off"})
        EXPECT_EQ(PeerProcess(L"debug_peer", setting).Wait(), 0) << setting;
    folder.Make(L"file", "");
    const String readOnly = folder.Make(L"read-only", "");
    SetFileAttributesW(readOnly.Text(), FILE_ATTRIBUTE_READONLY);
    for (const String& name : {folder.Path(L"file/trace.log"), folder.Path(), readOnly, folder.Path(L"none/trace.log")})
        EXPECT_EQ(PeerProcess(L"debug_peer", String(L"\"Debug.LogFilename=") + name + L"\" twice").Wait(), 0)
            << name.NarrowText();
    EXPECT_EQ(BytesOf(folder.Path(L"file")), "");
}
