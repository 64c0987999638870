// Locale data compared with the values of an independent implementation of the same API for 255 locales. For each type,
// the share of equal values must not fall below the measured one. `--gtest_output=xml` writes the current shares.
#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace
{

#ifndef _WIN32
// Must precede the first query: the reference's names in the user's language are English.
const bool isEnglish = setenv("LC_ALL", "C", 1) == 0;
#endif

using Row = std::vector<std::string>;

std::vector<Row> Reference()
{
    std::ifstream file(QXUT_TEST_DATA "/locale/reference.tsv", std::ios::binary);
    std::vector<Row> rows;
    for (std::string line; std::getline(file, line);)
    {
        std::istringstream cells(line + '\t');
        Row& row = rows.emplace_back();
        for (std::string cell; std::getline(cells, cell, '\t');)
            row.push_back(cell);
    }
    return rows;
}

std::string Utf8(const wchar_t* text)
{
    char bytes[1024];
    return WideCharToMultiByte(CP_UTF8, 0, text, -1, bytes, sizeof bytes, nullptr, nullptr) > 0 ? bytes : "(none)";
}

std::string Result(int length, const wchar_t* value)
{
    return length == 0 ? "error " + std::to_string(GetLastError()) : Utf8(value);
}

LCID NumberOf(const Row& row)
{
    return static_cast<LCID>(std::strtoul(row[0].c_str(), nullptr, 16));
}

// Results collected by the callbacks.
std::set<LCID> listed;

BOOL CALLBACK CollectLocale(LPWSTR text)
{
    EXPECT_TRUE(listed.insert(static_cast<LCID>(wcstoul(text, nullptr, 16))).second);
    return TRUE;
}

// Some locales are also listed with alternate sort orders.
BOOL CALLBACK CollectLocaleOfGroup(LGRPID, LCID locale, LPWSTR text, LONG_PTR)
{
    EXPECT_EQ(static_cast<LCID>(wcstoul(text, nullptr, 16)), locale);
    if (SORTIDFROMLCID(locale) == SORT_DEFAULT)
        listed.insert(locale);
    return TRUE;
}

BOOL CALLBACK CollectGroup(LGRPID group, LPWSTR, LPWSTR, DWORD, LONG_PTR count)
{
    ++*reinterpret_cast<int*>(count);
    return EnumLanguageGroupLocalesW(CollectLocaleOfGroup, group, 0, 0);
}

TEST(LocaleReference, NamesNumbersAndLists)
{
    const std::vector<Row> rows = Reference();
    ASSERT_EQ(rows.size(), 256u);
    std::set<LCID> expected;
    for (std::size_t i = 1; i < rows.size(); ++i)
    {
        wchar_t name[LOCALE_NAME_MAX_LENGTH] = {};
        LCIDToLocaleName(NumberOf(rows[i]), name, LOCALE_NAME_MAX_LENGTH, 0);
        EXPECT_EQ(Utf8(name), rows[i][1]) << rows[i][0];
        expected.insert(NumberOf(rows[i]));
    }
    EXPECT_TRUE(EnumSystemLocalesW(CollectLocale, LCID_SUPPORTED));
    EXPECT_EQ(listed, expected);

    listed.clear();
    int groups = 0;
    EXPECT_TRUE(EnumSystemLanguageGroupsW(CollectGroup, LGRPID_SUPPORTED, reinterpret_cast<LONG_PTR>(&groups)));
    EXPECT_EQ(groups, 17);
    EXPECT_EQ(listed, expected);
    EXPECT_FALSE(EnumLanguageGroupLocalesW(CollectLocaleOfGroup, 0x99, 0, 0));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
}

std::string Info(LCID locale, LCTYPE type)
{
    wchar_t value[256];
    return Result(GetLocaleInfoW(locale, type, value, 256), value);
}

template <auto Format>
std::string Formatted(LCID locale, DWORD flags)
{
    constexpr SYSTEMTIME kMoment{2018, 2, 6, 3, 15, 4, 7, 0};
    wchar_t value[256];
    return Result(Format(locale, flags, &kMoment, nullptr, value, 256), value);
}

// The name of a column of the reference, and the LCTYPE value of the same information.
#define INFORMATION(name) "LOCALE_" #name, LOCALE_##name

TEST(LocaleReference, Values)
{
    struct
    {
        std::string_view column;
        DWORD type;       // or the flags of a format
        int least = 1000; // minimum number of values per 1000 that agree with the reference
        std::string (*value)(LCID, DWORD) = Info;
    } constexpr kTypes[] = {{INFORMATION(SDATE), 980}, {INFORMATION(STIME), 996}, {INFORMATION(IDATE), 968},
        {INFORMATION(SLONGDATE), 988}, {INFORMATION(STIMEFORMAT), 976}, {INFORMATION(S1159), 976},
        {INFORMATION(S2359), 976}, {INFORMATION(SISO3166CTRYNAME)}, {INFORMATION(SISO639LANGNAME)},
        {INFORMATION(SENGCOUNTRY)}, {INFORMATION(ICOUNTRY)}, {INFORMATION(SABBREVCTRYNAME)},
        {INFORMATION(SNATIVECTRYNAME), 984}, {INFORMATION(SCOUNTRY)}, {INFORMATION(SCURRENCY), 968},
        {INFORMATION(IDEFAULTANSICODEPAGE)}, {INFORMATION(IDEFAULTCODEPAGE)}, {INFORMATION(SDECIMAL), 996},
        {INFORMATION(SDAYNAME1), 996}, {INFORMATION(SMONTHNAME1), 996},
        {"GetDateFormat(DATE_LONGDATE)", DATE_LONGDATE, 956, Formatted<GetDateFormatW>},
        {"GetTimeFormat(0)", 0, 968, Formatted<GetTimeFormatW>},
        {"GetTimeFormat(TIME_NOSECONDS)", TIME_NOSECONDS, 968, Formatted<GetTimeFormatW>},
        {"GetTimeFormat(TIME_FORCE24HOURFORMAT)", TIME_FORCE24HOURFORMAT, 968, Formatted<GetTimeFormatW>}};
    const std::vector<Row> rows = Reference();
    ASSERT_EQ(rows.size(), 256u);
    for (const auto& type : kTypes)
    {
        const auto column = std::find(rows[0].begin(), rows[0].end(), type.column);
        ASSERT_NE(column, rows[0].end()) << type.column;
        const auto index = static_cast<std::size_t>(column - rows[0].begin());
        std::size_t equal = 0;
        std::string differences;
        for (std::size_t i = 1; i < rows.size(); ++i)
        {
            const std::string value = type.value(NumberOf(rows[i]), type.type);
            if (value == rows[i][index])
                ++equal;
            else
                differences += "\n  " + rows[i][1] + " '" + value + "', there '" + rows[i][index] + "'";
        }
        const int share = static_cast<int>(equal * 1000 / (rows.size() - 1));
        RecordProperty(std::string(type.column), share);
        EXPECT_GE(share, type.least) << type.column << differences;
    }
}

} // namespace
