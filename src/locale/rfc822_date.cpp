#include "locale/date_cursor.h"
#include "locale/machine_date.h"
#include "locale/time_arithmetic.h"

#include <algorithm>
#include <cstdint>
#include <optional>

namespace qx
{

namespace
{

struct NamedZone
{
    std::wstring_view name;
    int hoursToAdd;
};
// Zones without a row are UTC, such as GMT.
constexpr NamedZone kZones[] = {
    {L"UT", 0}, {L"EST", 5}, {L"EDT", 4}, {L"CST", 6}, {L"CDT", 5}, {L"MST", 7}, {L"MDT", 6}, {L"PST", 8}, {L"PDT", 7}};
constexpr std::wstring_view kZoneWithoutRow = L"GMT";

constexpr std::wstring_view kMonths = L"janfebmaraprmayjunjulaugsepoctnovdec";

struct Parts
{
    std::wstring_view day, month, year, hour, minute, second;
    std::wstring_view zone; // including leading white space; empty if there is none
};

bool IsSpace(wchar_t c)
{
    return c == L' ' || (c >= L'\t' && c <= L'\r');
}

bool IsWordCharacter(wchar_t c)
{
    return IsDecimalDigit(c) || (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z') || c == L'_';
}

bool TakeWord(DateCursor& cursor, std::wstring_view& word)
{
    word = cursor.Take(3);
    return word.size() == 3 && std::all_of(word.begin(), word.end(), IsWordCharacter);
}

bool TakeDigits(DateCursor& cursor, std::wstring_view& digits)
{
    digits = cursor.TakeWhile(IsDecimalDigit);
    return !digits.empty();
}

bool SkipSpaces(DateCursor& cursor)
{
    return !cursor.TakeWhile(IsSpace).empty();
}

std::size_t LengthOfZone(std::wstring_view text)
{
    if (text.size() >= 5 && (text[0] == L'+' || text[0] == L'-') &&
        std::all_of(text.begin() + 1, text.begin() + 5, IsDecimalDigit))
        return 5;
    if (text.substr(0, kZoneWithoutRow.size()) == kZoneWithoutRow)
        return kZoneWithoutRow.size();
    for (const NamedZone& zone : kZones)
        if (text.substr(0, zone.name.size()) == zone.name)
            return zone.name.size();
    return 0;
}

std::wstring_view TakeZone(DateCursor& cursor)
{
    const std::wstring_view rest = cursor.Rest();
    const std::size_t spaces = cursor.TakeWhile(IsSpace).size();
    const std::size_t length = spaces == 0 ? 0 : LengthOfZone(cursor.Rest());
    return length == 0 ? std::wstring_view() : rest.substr(0, spaces + length);
}

bool ReadAtStart(DateCursor cursor, Parts& parts)
{
    if (!TakeDigits(cursor, parts.day) || !SkipSpaces(cursor) || !TakeWord(cursor, parts.month) ||
        !SkipSpaces(cursor) || !TakeDigits(cursor, parts.year) || parts.year.size() != 4 || !SkipSpaces(cursor) ||
        !TakeDigits(cursor, parts.hour) || !cursor.Skip(L":") || !TakeDigits(cursor, parts.minute) ||
        !cursor.Skip(L":") || !TakeDigits(cursor, parts.second))
        return false;
    parts.zone = TakeZone(cursor);
    return true;
}

// Finds what the following regular expression finds, but in linear time. The name of the day has no group, so only the
// first digits that continue as a date matter.
//   (?:\w{3},\s+)?(\d+)\s+(\w{3})\s+(\d{4})\s+(\d+):(\d+):(\d+)
//   (\s+(?:[+-]\d{4}|GMT|EST|EDT|CST|CDT|MST|MDT|PST|PDT|UT))?
bool FindParts(std::wstring_view text, Parts& parts)
{
    const auto isNoDigit = [](wchar_t c)
    {
        return !IsDecimalDigit(c);
    };
    for (DateCursor cursor(text); cursor.TakeWhile(isNoDigit), !cursor.IsAtEnd(); cursor.TakeWhile(IsDecimalDigit))
        if (ReadAtStart(cursor, parts))
            return true;
    return false;
}

// Returns the value of the digits. A value that doesn't fit into a field becomes one that isn't a valid date.
WORD FieldOf(std::wstring_view digits)
{
    std::uint32_t value = 0;
    for (const wchar_t digit : digits)
        value = std::min<std::uint32_t>(value * 10 + static_cast<std::uint32_t>(digit - L'0'), 0xFFFF);
    return static_cast<WORD>(value);
}

WORD MonthOf(std::wstring_view name)
{
    const auto isEqual = [](wchar_t given, wchar_t own)
    {
        return (given >= L'A' && given <= L'Z' ? given + (L'a' - L'A') : given) == own;
    };
    for (std::size_t i = 0; i < kMonths.size(); i += 3)
        if (std::equal(name.begin(), name.end(), kMonths.begin() + static_cast<std::ptrdiff_t>(i), isEqual))
            return static_cast<WORD>(i / 3 + 1);
    return 0;
}

// Returns nothing if there is no zone or the zone has no row.
std::optional<int> MinutesToUTC(std::wstring_view zone)
{
    DateCursor cursor(zone);
    cursor.TakeWhile(IsSpace);
    const std::wstring_view name = cursor.Rest();
    const bool isEast = cursor.Skip(L"+");
    WORD hours = 0;
    WORD minutes = 0;
    if ((isEast || cursor.Skip(L"-")) && cursor.Number(2, hours) && cursor.Number(2, minutes))
    {
        const int sum = hours * 60 + minutes;
        return isEast ? -sum : sum;
    }
    for (const NamedZone& row : kZones)
        if (row.name == name)
            return row.hoursToAdd * 60;
    return std::nullopt;
}

} // namespace

bool FindRFC822Date(std::wstring_view text, RFC822Date& date)
{
    Parts parts;
    if (!FindParts(text, parts))
        return false;
    date.written = {};
    date.written.wYear = FieldOf(parts.year);
    date.written.wMonth = MonthOf(parts.month);
    date.written.wDayOfWeek = 0xFFFF;
    date.written.wDay = FieldOf(parts.day);
    date.written.wHour = FieldOf(parts.hour);
    date.written.wMinute = FieldOf(parts.minute);
    date.written.wSecond = FieldOf(parts.second);
    date.minutesToUTC = MinutesToUTC(parts.zone);
    return true;
}

bool ReadRFC822Date(std::wstring_view text, SYSTEMTIME& time)
{
    RFC822Date date;
    if (!FindRFC822Date(text, date))
        return false;
    time = date.written;
    if (date.minutesToUTC)
        AddMinutes(time, *date.minutesToUTC);
    return true;
}

} // namespace qx
