// Dates in arbitrary text, parsed in the forms of German, American, Hungarian and unusual settings and in
// machine-readable forms. Results must satisfy the guarantees that callers rely on, and RFC 822 must be parsed as its
// pattern says.
#include "locale/date_text.h"
#include "core/pattern/regex.h"
#include "locale/date.h"
#include "locale/date_parser.h"
#include "locale/machine_date.h"

#include <windows.h>

#include <cstdint>
#include <cstdlib>
#include <vector>

using namespace qx;

namespace
{

constexpr SYSTEMTIME kToday{2021, 7, 0, 9, 10, 11, 12, 0};

clsLocaleDateInfo Info(DateOrder order, const wchar_t* dateSeparator, const wchar_t* timeSeparator)
{
    clsLocaleDateInfo info;
    info.dateOrder = order;
    info.dateSeparator = dateSeparator;
    info.timeSeparator = timeSeparator;
    return info;
}

void Require(bool holds)
{
    if (!holds)
        std::abort();
}

void CheckParsed(const SYSTEMTIME& time, std::int32_t result, std::uint32_t flags)
{
    Require(time.wDayOfWeek == 0 && time.wMilliseconds == 0);
    const bool isNothing = time.wYear == 0 && time.wMonth == 0 && time.wDay == 0;
    if (result == 0 && !isNothing && (flags & LOCDATE_ZERO_MISSING) == 0)
        Require(clsDate(time.wDay, time.wMonth, time.wYear).IsValid());
}

void ParseInAllSettings(const String& text, std::uint32_t flags)
{
    static clsDateParser parsers[] = {
        clsDateParser({Info(DateOrder::DayMonthYear, L".", L":"), L"HH:mm:ss", L"dd.MM.yyyy"}),
        clsDateParser({Info(DateOrder::MonthDayYear, L"/", L":"), L"h:mm:ss tt", L"M/d/yyyy"}),
        clsDateParser({Info(DateOrder::YearMonthDay, L".", L":"), L"H:mm:ss", L"yyyy. MM. dd."}),
        clsDateParser({Info(DateOrder::DayMonthYear, L"(?", L"|"), L"hh'(?:'mm tt", L"'[a'd'\\'M*yy"}),
    };
    for (clsDateParser& parser : parsers)
    {
        SYSTEMTIME time;
        const std::int32_t result = parser.Parse(text, flags, kToday, time);
        CheckParsed(time, result, flags);
    }
}

void CheckRFC822(const String& text)
{
    static clsRegEx pattern(L"(?:\\w{3},\\s+)?(\\d+)\\s+(\\w{3})\\s+(\\d{4})\\s+(\\d+):(\\d+):(\\d+)"
                            L"(\\s+(?:[+-]\\d{4}|GMT|EST|EDT|CST|CDT|MST|MDT|PST|PDT|UT))?",
        0);
    SYSTEMTIME time{};
    clsRegExMatchList matches;
    const bool isDate = ReadRFC822Date(text.View(), time);
    Require(isDate == pattern.Match(text, &matches));
    if (isDate && matches.Count() <= 7)
        Require(time.wYear == static_cast<WORD>(wcstol(matches[3].text, nullptr, 10)));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 1)
        return 0;
    const std::uint32_t flags = data[0];
    std::vector<wchar_t> units(data + 1, data + size); // each byte is one character: the patterns contain no others
    units.push_back(0);
    String text(units.data());
    text.TrimLeft();
    text.TrimRight();
    if (!text.IsEmpty())
        ParseInAllSettings(text, flags);
    CheckRFC822(text);
    const SYSTEMTIME machine = ReadMachineDate(text);
    LocaleDateText(0x0409, &machine, flags & 0x17);
    LocaleTextFromCompact(text);
    String compact;
    if (CompactFromLocaleText(text, flags, compact) && !compact.IsEmpty())
        Require(IsAllDigits(compact.View()));
    // The text also serves as a format.
    FormatEarlyDate(clsDate(3, 2, 904), 0x0409, text, 19);
    return 0;
}
