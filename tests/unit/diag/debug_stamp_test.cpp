#include "diag/debug_stamp.h"

#include "debug_support.h"
#include "support/own_settings.h"

#include <gtest/gtest.h>

#include <tuple>

using namespace qx;
using qxtest::Filled;

namespace
{

long long ticks = 0;
BOOL hasCounter = TRUE;

constexpr DebugTimeSource::Counter kCounter = {
    [](LARGE_INTEGER* value)
    {
        value->QuadPart = ticks;
        return hasCounter;
    },
    [](LARGE_INTEGER* value)
    {
        value->QuadPart = 10'000;
        return BOOL{TRUE};
    },
};
constexpr SYSTEMTIME kNoon = {2024, 2, 0, 5, 12, 34, 56, 789};

} // namespace

TEST(DebugStamp, ColumnsByTheTable)
{
    // Each line ends with the message "message".
    const std::tuple<const wchar_t*, scDebugStamp, const wchar_t*, int> cases[] = {
        {L"12:34:56.789 00001a2c/03 7 message", {false, kNoon, 0, 0x1A2C, 3, 7}, L"", 0},
        {L"12:34:56.789 00001a2c/03 7 INIT   message", {false, kNoon, 0, 0x1A2C, 3, 47}, L"INIT", 2},
        {L"00:00:00.000 ffffffff/40 5   message", {false, {}, 0, 0xFFFFFFFF, 64, 0xFFFFFFFF}, L"", 2},
        {L"34:56.789 00000001/13f 9 a b message", {true, kNoon, 2'096'789, 1, 319, 9}, L"a b", 0},
        {L"00:00.000 00000001/00 0 message", {true, {}, 3'600'000, 1, 0, 0}, L"", 0},
        // Only the low 32 bits are used: 71,582 minutes and 47.295 seconds
        {L"02:47.295 00000001/00 0 message", {true, {}, 0x7'FFFF'FFFF, 1, 0, 0}, L"", 0}};
    for (const auto& [expected, stamp, section, depth] : cases)
    {
        DebugLineText line;
        AppendStamp(line, stamp, section, depth);
        line.Append(L"%s", L"message");
        EXPECT_STREQ(line.Text(), expected);
    }
}

TEST(DebugStamp, TheUsersSettingDecidesOnceForTheTimeSource)
{
    const qxtest::OwnSettings settings;
    EXPECT_FALSE(DebugTimeSource(kCounter).UsesCounter()); // no key
    // A text of more than 63 characters doesn't fit in the buffer of 128 bytes.
    for (const auto& [value, usesCounter] :
        {std::pair<String, bool>(L"T", true), {L"f", true}, {L"", true}, {L" F", true}, {Filled(L'x', 63), true},
            {L"F", false}, {L"False", false}, {L"0", false}, {L"01", false}, {Filled(L'x', 64), false}})
    {
        ASSERT_TRUE(settings.Set(HKEY_CURRENT_USER, L"ForceUsePerfCounters", value));
        EXPECT_EQ(DebugTimeSource(kCounter).UsesCounter(), usesCounter) << value.NarrowText();
    }
    // The type of the registry value is ignored.
    constexpr DWORD kOne = 1;
    ASSERT_TRUE(settings.Set(HKEY_CURRENT_USER, L"ForceUsePerfCounters", REG_DWORD, &kOne, sizeof kOne));
    EXPECT_TRUE(DebugTimeSource(kCounter).UsesCounter());
    hasCounter = FALSE;
    EXPECT_FALSE(DebugTimeSource(kCounter).UsesCounter());
    hasCounter = TRUE;

    // The elapsed time begins when the source is created.
    ASSERT_TRUE(settings.Set(HKEY_CURRENT_USER, L"ForceUsePerfCounters", L"T"));
    ticks = 5'000'000'000;
    DebugTimeSource source(kCounter);
    EXPECT_EQ(MakeDebugStamp(source, 3, 8).elapsed, 0);
    ticks += 12'345;
    ASSERT_TRUE(settings.Set(HKEY_CURRENT_USER, L"ForceUsePerfCounters", L"F"));
    EXPECT_EQ(MakeDebugStamp(source, 3, 8).elapsed, 1'234);
}
