// Formats dates with the system's formats of a locale and parses them again with the same formats. Most must produce
// the same moment; the tables list the ones for which the parsing rules prevent it.
#include <gtest/gtest.h>

#include "unit/locale/date_support.h"

#include <cstdint>
#include <set>
#include <string>

using namespace qx;
using namespace qxtest;

namespace
{

constexpr SYSTEMTIME kMoments[] = {{2018, 12, 0, 31, 23, 59, 58, 0}, // matches every pattern
    {2018, 12, 0, 10, 1, 2, 3, 0}, // a day that the format's own pattern doesn't accept
    {2020, 2, 0, 29, 0, 5, 0, 0},  // the first hour of the day
    {1999, 11, 0, 9, 12, 0, 1, 0}, // the twelfth hour
    {1601, 1, 0, 1, 9, 0, 0, 0},   // the first year that the system formats
    {2100, 7, 0, 20, 15, 4, 7, 0}};

String Info(LCID locale, LCTYPE type)
{
    wchar_t text[256];
    return GetLocaleInfoW(locale, type, text, 256) > 0 ? text : L"";
}

// Returns the settings as if the locale were the user's.
DateSettings SettingsOf(LCID locale)
{
    return {clsLocaleDateInfo(locale), Info(locale, LOCALE_STIMEFORMAT), Info(locale, LOCALE_SSHORTDATE)};
}

String Written(LCID locale, const SYSTEMTIME& time, bool withDate, bool withTime)
{
    wchar_t date[64] = {}, clock[64] = {};
    if (withDate)
        GetDateFormatW(locale, DATE_SHORTDATE, &time, nullptr, date, 64);
    if (withTime)
        GetTimeFormatW(locale, 0, &time, nullptr, clock, 64);
    String text = String(date) + L" " + clock;
    text.TrimLeft();
    text.TrimRight();
    return text;
}

// Returns the texts of the moments that are not parsed back.
std::set<std::string> Lost(LCID locale, bool withDate, bool withTime)
{
    clsDateParser parser(SettingsOf(locale));
    std::set<std::string> lost;
    for (SYSTEMTIME time : kMoments)
    {
        const String text = Written(locale, time, withDate, withTime);
        if (!withTime)
            time.wHour = time.wMinute = time.wSecond = 0;
        if (!withDate)
            time.wYear = time.wMonth = time.wDay = 0;
        SYSTEMTIME read;
        const std::int32_t result =
            parser.Parse(text, withDate ? 0u : std::uint32_t{LOCDATE_ALLOW_TIME_ONLY}, kToday, read);
        if (result != 0 || Show(read) != Show(time))
            lost.insert(text.NarrowText());
    }
    return lost;
}

TEST(RoundTrip, OfLocales)
{
    struct Case
    {
        LCID locale;
        std::size_t lost[3]; // of six dates, of dates with times, of times
    };
    constexpr Case kCases[] = {{0x0407, {}}, {0x0409, {}}, {0x0809, {}}, {0x040c, {}}, {0x0411, {}}, {0x041e, {}},
        {0x041d, {}},         // German, American, British, French, Japanese, Thai, Swedish
        {0x0401, {0, 6, 6}},  // Arabic: AM/PM markers with letters other than A and P aren't recognised
        {0x040e, {2, 6, 0}}}; // Hungarian: only the format's own pattern accepts a dot after the date, and it doesn't
                              // accept single-digit hours or the days 10 and 20
    for (const Case& row : kCases)
        for (const int what : {0, 1, 2})
        {
            const std::set<std::string> lost = Lost(row.locale, what != 2, what != 0);
            EXPECT_EQ(lost.size(), row.lost[what]) << std::hex << row.locale << testing::PrintToString(lost);
        }
}

} // namespace
