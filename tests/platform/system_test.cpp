// Environment, times, critical sections, pointer tests, names of user and machine.
#include "system_support.h"

#include <cstring>
#include <thread>
#include <vector>

using namespace qxtest;

namespace
{

Text Variable(const Text& name)
{
    WCHAR buffer[100] = {};
    GetEnvironmentVariableW(name, buffer, 100);
    return buffer;
}

TEST(Environment, NamesHaveNoCase)
{
    EXPECT_TRUE(SetEnvironmentVariableW(L"QxTestVar", L"one"));
    EXPECT_EQ(Variable(L"QXTESTVAR"), Text(L"one"));
    EXPECT_TRUE(SetEnvironmentVariableW(L"qxtestvar", L"\x00E4\xD83D\xDE00"));
    EXPECT_EQ(Variable(L"QxTestVar"), Text(L"\x00E4\xD83D\xDE00"));
    EXPECT_TRUE(SetEnvironmentVariableW(L"QXTESTVAR", nullptr));
    WCHAR buffer[10];
    EXPECT_EQ(
        ErrorOf([&] { return GetEnvironmentVariableW(L"QxTestVar", buffer, 10); }), DWORD{ERROR_ENVVAR_NOT_FOUND});
    EXPECT_EQ(ErrorOf([] { return SetEnvironmentVariableW(L"a=b", L"x"); }), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(ErrorOf([] { return SetEnvironmentVariableW(L"", L"x"); }), DWORD{ERROR_INVALID_PARAMETER});
}

TEST(Environment, BufferSizes)
{
    EXPECT_TRUE(SetEnvironmentVariableW(L"QxTestVar", L"abc"));
    WCHAR buffer[10] = L"#";
    EXPECT_EQ(GetEnvironmentVariableW(L"QxTestVar", nullptr, 0), 4u);
    EXPECT_EQ(GetEnvironmentVariableW(L"QxTestVar", buffer, 3), 4u);
    EXPECT_EQ(GetEnvironmentVariableW(L"QxTestVar", buffer, 4), 3u);
    EXPECT_EQ(Text(buffer), Text(L"abc"));
    EXPECT_EQ(ExpandEnvironmentStringsW(L"<%QxTestVar%>", nullptr, 0), 6u);
    EXPECT_EQ(ExpandEnvironmentStringsW(L"<%QxTestVar%>", buffer, 5), 6u);
    EXPECT_EQ(ExpandEnvironmentStringsW(L"<%QxTestVar%>", buffer, 6), 6u);
    EXPECT_EQ(Text(buffer), Text(L"<abc>"));
    EXPECT_TRUE(SetEnvironmentVariableW(L"QxTestVar", nullptr));
}

TEST(Environment, Expansion)
{
    struct
    {
        const wchar_t* text;
        const wchar_t* expected;
    } constexpr cases[] = {
        {L"", L""},
        {L"plain", L"plain"},
        {L"%QXV%", L"abc"},
        {L"x%qxv%y", L"xabcy"},
        {L"%QXV%%QXV%", L"abcabc"},
        {L"%qxnothing%", L"%qxnothing%"},
        {L"%qxnothing%QXV%", L"%qxnothing%QXV%"},
        {L"100% of %QXV%", L"100% of %QXV%"},
        {L"%%QXV%", L"%%QXV%"}, // the name between the first two is empty,
        {L"%QXV", L"%QXV"},
        {L"%", L"%"},
        {L"%%", L"%%"},
    };
    EXPECT_TRUE(SetEnvironmentVariableW(L"QXV", L"abc"));
    for (const auto& [text, expected] : cases)
    {
        WCHAR buffer[100] = {};
        const DWORD size = ExpandEnvironmentStringsW(text, buffer, 100);
        EXPECT_EQ(size, Text(buffer).size() + 1);
        EXPECT_EQ(Text(buffer), Text(expected)) << Text(text).Narrow();
    }
    EXPECT_TRUE(SetEnvironmentVariableW(L"QXV", nullptr));
}

bool IsSameTime(const SYSTEMTIME& left, const SYSTEMTIME& right)
{
    return std::memcmp(&left, &right, sizeof left) == 0;
}

TEST(Times, FileTimeAndCalendar)
{
    struct
    {
        ULONGLONG units;
        SYSTEMTIME time;
    } constexpr cases[] = {
        {0, {1601, 1, 1, 1, 0, 0, 0, 0}},
        {94405824000000000, {1900, 3, 4, 1, 0, 0, 0, 0}},
        {116444736000000000, {1970, 1, 4, 1, 0, 0, 0, 0}},
        {125962991990000000, {2000, 2, 2, 29, 11, 59, 59, 0}},
        {133485407999990000, {2023, 12, 0, 31, 23, 59, 59, 999}},
        {2650467743999990000, {9999, 12, 5, 31, 23, 59, 59, 999}},
    };
    for (const auto& [units, time] : cases)
    {
        const FILETIME fileTime{static_cast<DWORD>(units), static_cast<DWORD>(units >> 32)};
        SYSTEMTIME split{};
        FILETIME back{};
        EXPECT_TRUE(FileTimeToSystemTime(&fileTime, &split));
        EXPECT_TRUE(SystemTimeToFileTime(&split, &back));
        EXPECT_EQ(CompareFileTime(&back, &fileTime), 0) << units;
        EXPECT_TRUE(IsSameTime(split, time))
            << units << ": " << split.wYear << '-' << split.wMonth << '-' << split.wDay << ' ' << split.wHour << ':'
            << split.wMinute << ':' << split.wSecond << '.' << split.wMilliseconds << " day " << split.wDayOfWeek;
    }
    for (const SYSTEMTIME time :
        {SYSTEMTIME{2023, 2, 0, 30}, SYSTEMTIME{1600, 12, 0, 31}, SYSTEMTIME{2023, 0, 0, 1}, SYSTEMTIME{2023, 13, 0, 1},
            SYSTEMTIME{2023, 1, 0, 0}, SYSTEMTIME{2023, 1, 0, 1, 24}, SYSTEMTIME{2023, 1, 0, 1, 0, 60},
            SYSTEMTIME{2023, 1, 0, 1, 0, 0, 60}, SYSTEMTIME{2023, 1, 0, 1, 0, 0, 0, 1000}})
    {
        FILETIME fileTime;
        EXPECT_EQ(ErrorOf([&] { return SystemTimeToFileTime(&time, &fileTime); }), DWORD{ERROR_INVALID_PARAMETER})
            << time.wYear << '-' << time.wMonth << '-' << time.wDay;
    }
    if (isLayer) // Wine takes it
    {
        const SYSTEMTIME noLeapDay{2023, 2, 0, 29};
        FILETIME fileTime;
        EXPECT_FALSE(SystemTimeToFileTime(&noLeapDay, &fileTime));
    }
    const FILETIME tooLate{0, 0x80000000};
    SYSTEMTIME split;
    EXPECT_EQ(ErrorOf([&] { return FileTimeToSystemTime(&tooLate, &split); }), DWORD{ERROR_INVALID_PARAMETER});
}

TEST(Times, LocalTimeIsThatOfTheUsersZone)
{
    SYSTEMTIME universal, expected, local;
    GetSystemTime(&universal);
    GetLocalTime(&expected);
    ASSERT_TRUE(SystemTimeToTzSpecificLocalTime(nullptr, &universal, &local));
    FILETIME localUnits, expectedUnits;
    ASSERT_TRUE(SystemTimeToFileTime(&local, &localUnits) && SystemTimeToFileTime(&expected, &expectedUnits));
    const auto units = [](const FILETIME& time)
    {
        return LONGLONG{time.dwHighDateTime} << 32 | time.dwLowDateTime;
    };
    EXPECT_NEAR(static_cast<double>(units(localUnits) - units(expectedUnits)), 0, 1e7) << "in units of 100 ns";
}

TEST(Times, LocalTimeAndBack)
{
    // Away from the two hours of a year that come twice or not at all.
    for (const SYSTEMTIME time : {SYSTEMTIME{1975, 1, 3, 1, 0, 0, 0, 1}, SYSTEMTIME{2024, 7, 0, 14, 23, 59, 59, 999},
             SYSTEMTIME{2024, 12, 2, 31, 23, 59, 59, 0}})
    {
        SYSTEMTIME universal, local;
        ASSERT_TRUE(TzSpecificLocalTimeToSystemTime(nullptr, &time, &universal));
        ASSERT_TRUE(SystemTimeToTzSpecificLocalTime(nullptr, &universal, &local));
        EXPECT_TRUE(local.wDay == time.wDay && local.wHour == time.wHour && local.wMinute == time.wMinute &&
                    local.wMilliseconds == time.wMilliseconds)
            << time.wYear;
    }
}

TEST(Times, DosDateAndTime)
{
    struct
    {
        SYSTEMTIME time;
        WORD date;
        WORD seconds;
    } constexpr cases[] = {
        {{1980, 1, 2, 1, 0, 0, 0, 0}, 0x0021, 0},
        {{2024, 2, 4, 29, 12, 34, 56, 0}, 0x585D, 0x645C},
        {{2107, 12, 6, 31, 23, 59, 58, 0}, 0xFF9F, 0xBF7D},
    };
    for (const auto& [time, date, seconds] : cases)
    {
        FILETIME units, back;
        WORD givenDate = 0, givenTime = 0;
        ASSERT_TRUE(SystemTimeToFileTime(&time, &units));
        EXPECT_TRUE(FileTimeToDosDateTime(&units, &givenDate, &givenTime));
        EXPECT_EQ(givenDate, date);
        EXPECT_EQ(givenTime, seconds);
        EXPECT_TRUE(DosDateTimeToFileTime(date, seconds, &back));
        EXPECT_EQ(CompareFileTime(&units, &back), 0) << time.wYear;
    }
    FILETIME units;
    WORD date, time;
    for (const WORD year : {WORD{1979}, WORD{2108}})
    {
        const SYSTEMTIME outside{year, 6, 0, 1};
        ASSERT_TRUE(SystemTimeToFileTime(&outside, &units));
        if (isLayer || year < 2108) // Wine begins anew after 2107
        {
            EXPECT_FALSE(FileTimeToDosDateTime(&units, &date, &time)) << year;
        }
    }
}

TEST(Session, ProcessesAndTheWindowStation)
{
    DWORD session = 99;
    EXPECT_TRUE(ProcessIdToSessionId(GetCurrentProcessId(), &session));
    EXPECT_LT(session, 99u);
    EXPECT_EQ(GetSystemMetrics(SM_REMOTESESSION), 0);

    const HWINSTA station = GetProcessWindowStation();
    USEROBJECTFLAGS flags{TRUE, TRUE, 99};
    DWORD needed = 0;
    EXPECT_TRUE(GetUserObjectInformationW(station, UOI_FLAGS, &flags, sizeof flags, &needed));
    EXPECT_EQ(needed, sizeof flags);
    EXPECT_EQ(flags.dwFlags, isLayer ? 0u : DWORD{WSF_VISIBLE}); // the layer has no screen
    EXPECT_EQ(ErrorOf([&] { return GetUserObjectInformationW(station, UOI_FLAGS, &flags, 4, &needed); }),
        isLayer ? DWORD{ERROR_INSUFFICIENT_BUFFER} : DWORD{ERROR_BUFFER_OVERFLOW}); // Wine's own choice
    EXPECT_EQ(ErrorOf([&] { return GetUserObjectInformationW(&flags, UOI_FLAGS, &flags, sizeof flags, &needed); }),
        DWORD{ERROR_INVALID_HANDLE});
}

TEST(Times, ClocksAgree)
{
    LARGE_INTEGER frequency, begin, end;
    ASSERT_TRUE(QueryPerformanceFrequency(&frequency));
    const ULONGLONG ticks = GetTickCount64();
    QueryPerformanceCounter(&begin);
    EXPECT_EQ(timeBeginPeriod(1), UINT{TIMERR_NOERROR});
    EXPECT_EQ(timeBeginPeriod(0), UINT{TIMERR_NOCANDO});
    Sleep(60);
    EXPECT_EQ(timeEndPeriod(1), UINT{TIMERR_NOERROR});
    QueryPerformanceCounter(&end);
    const double counted =
        static_cast<double>(end.QuadPart - begin.QuadPart) * 1000.0 / static_cast<double>(frequency.QuadPart);
    const double ticked = static_cast<double>(GetTickCount64() - ticks);
    EXPECT_GE(counted, 59.0);
    EXPECT_NEAR(counted, ticked, 40);
    EXPECT_NEAR(static_cast<double>(GetTickCount()), static_cast<double>(static_cast<DWORD>(GetTickCount64())), 1000);

    FILETIME now;
    SYSTEMTIME split, splitNow;
    GetSystemTimeAsFileTime(&now);
    GetSystemTime(&split);
    EXPECT_TRUE(FileTimeToSystemTime(&now, &splitNow));
    EXPECT_TRUE(split.wYear >= 2023 && split.wMonth == splitNow.wMonth) << "unless the month has just ended";
}

TEST(CriticalSections, OneThreadAtATimeAndOneThreadAgain)
{
    CRITICAL_SECTION section;
    EXPECT_TRUE(InitializeCriticalSectionAndSpinCount(&section, 100));
    constexpr int threadCount = 4, rounds = 20000;
    int count = 0;
    std::vector<std::thread> threads;
    for (int index = 0; index < threadCount; ++index)
        threads.emplace_back(
            [&]
            {
                for (int round = 0; round < rounds; ++round)
                {
                    EnterCriticalSection(&section);
                    EnterCriticalSection(&section);
                    ++count;
                    LeaveCriticalSection(&section);
                    if (round % 100 == 0)
                        std::this_thread::yield(); // held once still
                    LeaveCriticalSection(&section);
                }
            });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(count, threadCount * rounds);

    EXPECT_TRUE(TryEnterCriticalSection(&section));
    EXPECT_TRUE(TryEnterCriticalSection(&section));
    BOOL others = TRUE;
    const auto tryElsewhere = [&]
    {
        std::thread(
            [&]
            {
                others = TryEnterCriticalSection(&section);
                if (others)
                    LeaveCriticalSection(&section);
            })
            .join();
        return others;
    };
    EXPECT_FALSE(tryElsewhere());
    LeaveCriticalSection(&section);
    EXPECT_FALSE(tryElsewhere());
    LeaveCriticalSection(&section);
    EXPECT_TRUE(tryElsewhere());
    DeleteCriticalSection(&section);
}

TEST(Interlocked, GivesTheDocumentedValues)
{
    LONG value = 5;
    EXPECT_EQ(InterlockedIncrement(&value), 6);
    EXPECT_EQ(InterlockedDecrement(&value), 5);
    EXPECT_EQ(InterlockedExchange(&value, 7), 5);
    EXPECT_EQ(InterlockedExchangeAdd(&value, -9), 7);
    EXPECT_EQ(InterlockedCompareExchange(&value, 1, 0), -2);
    EXPECT_EQ(InterlockedCompareExchange(&value, 12, -2), -2);
    EXPECT_EQ(InterlockedAnd(&value, 10), 12);
    EXPECT_EQ(InterlockedOr(&value, 3), 8);
    EXPECT_EQ(value, 11);
    int target = 0;
    PVOID pointer = nullptr;
    EXPECT_EQ(InterlockedCompareExchangePointer(&pointer, &target, nullptr), nullptr);
    EXPECT_EQ(InterlockedExchangePointer(&pointer, nullptr), &target);
}

TEST(PointerTests, PagesTheirEndsAndOddAddresses)
{
    SYSTEM_INFO info;
    GetSystemInfo(&info);
    const size_t page = info.dwPageSize;
    static const char constant[] = "can't be written";
    std::vector<char> room(3 * page, 'x');
    EXPECT_FALSE(IsBadReadPtr(room.data(), room.size()));
    EXPECT_FALSE(IsBadWritePtr(room.data(), room.size()));
    EXPECT_EQ(room, std::vector<char>(3 * page, 'x')) << "nothing is changed";
    EXPECT_FALSE(IsBadReadPtr(constant, sizeof constant));
    EXPECT_TRUE(IsBadWritePtr(const_cast<char*>(constant), sizeof constant));
    for (const UINT_PTR bad : {UINT_PTR{0}, UINT_PTR{8}, UINT_PTR{0xFFFF800000000000}, ~UINT_PTR{0}})
    {
        EXPECT_TRUE(IsBadReadPtr(reinterpret_cast<const void*>(bad), 1)) << bad;
        EXPECT_TRUE(IsBadWritePtr(reinterpret_cast<void*>(bad), 1)) << bad;
        EXPECT_TRUE(IsBadStringPtrW(reinterpret_cast<LPCWSTR>(bad), 1)) << bad;
        EXPECT_FALSE(IsBadReadPtr(reinterpret_cast<const void*>(bad), 0)) << bad;
    }
    EXPECT_TRUE(IsBadReadPtr(room.data(), ~UINT_PTR{0})) << "runs over the end of all addresses";
    EXPECT_FALSE(IsBadStringPtrW(L"text", 100));
}

TEST(Names, UserAndMachine)
{
    WCHAR name[300] = {};
    DWORD size = 300;
    EXPECT_TRUE(GetUserNameW(name, &size));
    EXPECT_EQ(size, Text(name).size() + 1);
    EXPECT_GT(size, 1u);
    size = 1;
    EXPECT_EQ(ErrorOf([&] { return GetUserNameW(name, &size); }), DWORD{ERROR_INSUFFICIENT_BUFFER});
    EXPECT_EQ(size, Text(name).size() + 1);

    size = MAX_COMPUTERNAME_LENGTH + 1;
    EXPECT_TRUE(GetComputerNameW(name, &size));
    EXPECT_EQ(size, Text(name).size());
    size = 1;
    EXPECT_EQ(ErrorOf([&] { return GetComputerNameW(name, &size); }), DWORD{ERROR_BUFFER_OVERFLOW});
}

TEST(Version, Windows10OrLater)
{
    const DWORD version = GetVersion();
    OSVERSIONINFOEXW info{};
    info.dwOSVersionInfoSize = sizeof info;
    EXPECT_TRUE(GetVersionExW(reinterpret_cast<LPOSVERSIONINFOW>(&info)));
    EXPECT_EQ(info.dwMajorVersion, version & 0xFF);
    EXPECT_EQ(info.dwMinorVersion, version >> 8 & 0xFF);
    EXPECT_EQ(info.dwBuildNumber, version >> 16);
    EXPECT_EQ(info.dwPlatformId, DWORD{VER_PLATFORM_WIN32_NT});
    info.dwOSVersionInfoSize = 4;
    EXPECT_FALSE(GetVersionExW(reinterpret_cast<LPOSVERSIONINFOW>(&info)));
}

} // namespace
