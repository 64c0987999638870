// Environment, times, critical sections, pointer tests, the session.
#include "system_support.h"

#include <cstring>
#include <thread>
#include <vector>

using namespace qxtest;

namespace
{

TEST(Environment, NamesAndSizes)
{
    EXPECT_TRUE(SetEnvironmentVariableW(L"QxTestVar", L"abc"));
    WCHAR buffer[10] = L"#";
    EXPECT_EQ(GetEnvironmentVariableW(L"QXTESTVAR", nullptr, 0), 4u);
    EXPECT_EQ(GetEnvironmentVariableW(L"QxTestVar", buffer, 3), 4u);
    EXPECT_EQ(GetEnvironmentVariableW(L"QxTestVar", buffer, 4), 3u);
    EXPECT_EQ(ExpandEnvironmentStringsW(L"<%QxTestVar%>", buffer, 5), 6u);
    EXPECT_EQ(ExpandEnvironmentStringsW(L"<%QxTestVar%>", buffer, 6), 6u);
    EXPECT_EQ(Text(buffer), Text(L"<abc>"));
    EXPECT_TRUE(SetEnvironmentVariableW(L"QXTESTVAR", nullptr));
    EXPECT_EQ(
        ErrorOf([&] { return GetEnvironmentVariableW(L"QxTestVar", buffer, 10); }), DWORD{ERROR_ENVVAR_NOT_FOUND});
}

TEST(Times, FileTimeAndCalendar)
{
    struct
    {
        ULONGLONG units;
        SYSTEMTIME time;
    } constexpr cases[] = {{0, {1601, 1, 1, 1, 0, 0, 0, 0}}, {94405824000000000, {1900, 3, 4, 1, 0, 0, 0, 0}},
        {125962991990000000, {2000, 2, 2, 29, 11, 59, 59, 0}}, {133485407999990000, {2023, 12, 0, 31, 23, 59, 59, 999}},
        {2650467743999990000, {9999, 12, 5, 31, 23, 59, 59, 999}}};
    for (const auto& [units, time] : cases)
    {
        const FILETIME fileTime{static_cast<DWORD>(units), static_cast<DWORD>(units >> 32)};
        SYSTEMTIME split{};
        FILETIME back{};
        EXPECT_TRUE(FileTimeToSystemTime(&fileTime, &split));
        EXPECT_TRUE(SystemTimeToFileTime(&split, &back));
        EXPECT_EQ(CompareFileTime(&back, &fileTime), 0) << units;
        EXPECT_EQ(std::memcmp(&split, &time, sizeof time), 0) << units;
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
    const FILETIME tooLate{0, 0x80000000};
    SYSTEMTIME split;
    EXPECT_EQ(ErrorOf([&] { return FileTimeToSystemTime(&tooLate, &split); }), DWORD{ERROR_INVALID_PARAMETER});
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
                    EXPECT_TRUE(TryEnterCriticalSection(&section));
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

    EnterCriticalSection(&section);
    std::thread([&] { EXPECT_FALSE(TryEnterCriticalSection(&section)); }).join();
    LeaveCriticalSection(&section);
    DeleteCriticalSection(&section);
}

TEST(PointerTests, PagesTheirEndsAndOddAddresses)
{
    std::vector<char> room(3 * 4096, 'x');
    EXPECT_FALSE(IsBadReadPtr(room.data(), room.size()));
    EXPECT_TRUE(IsBadReadPtr(room.data(), ~UINT_PTR{0})) << "runs over the end of all addresses";
    EXPECT_FALSE(IsBadStringPtrW(L"text", 100));
    for (const UINT_PTR bad : {UINT_PTR{0}, UINT_PTR{8}, UINT_PTR{0xFFFF800000000000}, ~UINT_PTR{0}})
    {
        EXPECT_TRUE(IsBadReadPtr(reinterpret_cast<const void*>(bad), 1)) << bad;
        EXPECT_TRUE(IsBadStringPtrW(reinterpret_cast<LPCWSTR>(bad), 1)) << bad;
    }
}

} // namespace
