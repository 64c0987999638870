#include "diag/log_file.h"

#include "debug_support.h"
#include "files/path_separator.h"
#include "support/own_settings.h"

#include <gtest/gtest.h>

using namespace qx;
using namespace qxtest;

TEST(LogFile, SettingsByTheTable)
{
    const OwnSettings settings;
    EXPECT_FALSE(DebugLogFile::FromSettings().IsSet()); // no key

    wchar_t temp[MAX_PATH + 1] = {};
    GetTempPathW(MAX_PATH, temp);
    const TempFolder folder;
    const String longName = folder.Path(Filled(L'n', 300).Text()), inTemp = String(temp) + L"trace.log";
    for (const auto& [value, expected] :
        {std::pair<String, String>(L"", L""), {L"trace.log", inTemp}, {L"c:\\logs\\trace.log", L"c:\\logs\\trace.log"},
            {L"/logs/trace.log", L"/logs/trace.log"}, {longName, longName}})
    {
        ASSERT_TRUE(settings.Set(HKEY_LOCAL_MACHINE, L"Debug.LogFilename", value));
        const DebugLogFile log = DebugLogFile::FromSettings();
        EXPECT_STREQ(log.Name(), expected);
        EXPECT_EQ(log.IsSet(), !expected.IsEmpty());
        EXPECT_FALSE(log.IsFlushed());
    }
    for (const auto& [value, isFlushed] :
        {std::pair(L"T", true), {L"True", true}, {L"t", false}, {L"1", false}, {L" T", false}, {L"", false}})
    {
        ASSERT_TRUE(settings.Set(HKEY_LOCAL_MACHINE, L"Debug.LogFile.Flush", value));
        EXPECT_EQ(DebugLogFile::FromSettings().IsFlushed(), isFlushed) << value;
    }
    constexpr DWORD kOne = 1;
    ASSERT_TRUE(settings.Set(HKEY_LOCAL_MACHINE, L"Debug.LogFilename", REG_DWORD, &kOne, sizeof kOne));
    EXPECT_FALSE(DebugLogFile::FromSettings().IsSet());
}

TEST(LogFile, HoldsPlainUnitsAndGrowsWhileSomebodyReads)
{
    const TempFolder folder;
    const String path = folder.Make(L"log", "old");
    const HANDLE reader = OpenToRead(path, FILE_SHARE_READ | FILE_SHARE_WRITE);
    ASSERT_NE(reader, INVALID_HANDLE_VALUE);
    for (const bool isFlushed : {false, true})
        DebugLogFile(path, isFlushed).Append(L"a\u25A0", 2);
    CloseHandle(reader);
    EXPECT_EQ(BytesOf(path), std::string("olda\0\xA0\x25\r\0\n\0a\0\xA0\x25\r\0\n\0", 19));
}

// A line waits a tenth of a second for a locked file, then it is lost.
TEST(LogFile, ALineIsLostWhereTheFileIsLocked)
{
    OwnOutput output;
    output.Write(nullptr, 0, L"before");
    const HANDLE keeper = OpenToRead(output.path);
    ASSERT_NE(keeper, INVALID_HANDLE_VALUE);
    const ULONGLONG begin = GetTickCount64();
    output.Write(nullptr, 1, L">lost");
    EXPECT_GE(GetTickCount64() - begin, 85u); // minus the resolution of the clock
    CloseHandle(keeper);
    output.Write(nullptr, -1, L"<after");
    EXPECT_EQ(output.Rests(), (std::vector<std::string>{"before", "<after"}));
}

// Append returns at once if the log file is a device; it doesn't retry.
TEST(LogFile, ADeviceGetsNoLinesAndCostsNoTime)
{
    if (!kHasPosixFiles)
        GTEST_SKIP() << "the device has no path there";
    const ULONGLONG begin = GetTickCount64();
    for (int i = 0; i < 20; ++i)
        DebugLogFile(L"/dev/null", false).Append(L"line", 4);
    EXPECT_LT(GetTickCount64() - begin, 1000u);
}
