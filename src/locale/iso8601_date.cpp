#include "locale/date_cursor.h"
#include "locale/machine_date.h"
#include "locale/time_arithmetic.h"

namespace qx
{

namespace
{

constexpr int kMinutesPerDay = 24 * 60;
constexpr std::wstring_view kHyphens = L"-\u2010";

// Reads an optional separator and two mandatory digits.
bool ReadPart(DateCursor& cursor, std::wstring_view separators, WORD& part)
{
    cursor.Skip(separators);
    return cursor.Number(2, part);
}

bool ReadDate(DateCursor& cursor, SYSTEMTIME& time)
{
    return cursor.Number(4, time.wYear) && ReadPart(cursor, kHyphens, time.wMonth) &&
           ReadPart(cursor, kHyphens, time.wDay);
}

// Reads the time after the "T". It may end after each part.
bool ReadTime(DateCursor& cursor, SYSTEMTIME& time)
{
    if (!cursor.Number(2, time.wHour))
        return false;
    if (!cursor.IsAtEnd() && !ReadPart(cursor, L":", time.wMinute))
        return false;
    if (!cursor.IsAtEnd() && !ReadPart(cursor, L":", time.wSecond))
        return false;
    cursor.Skip(L".,");
    cursor.TakeWhile(IsDecimalDigit);
    if (time.wHour == 24)
    {
        time.wHour = 0;
        AddMinutes(time, kMinutesPerDay);
    }
    return true;
}

bool ReadZone(DateCursor& cursor, int& minutes)
{
    WORD hours = 0;
    WORD rest = 0;
    if (!cursor.Number(2, hours))
        return false;
    ReadPart(cursor, L":", rest); // optional
    minutes = hours * 60 + rest;
    return true;
}

} // namespace

bool ReadISO8601Date(std::wstring_view text, SYSTEMTIME& time)
{
    DateCursor cursor(text);
    SYSTEMTIME read{};
    read.wDayOfWeek = 0xFFFF;
    if (!ReadDate(cursor, read) || (cursor.Skip(L"T") && !ReadTime(cursor, read)))
        return false;
    int minutes = 0;
    if (cursor.Skip(L"+"))
    {
        if (!ReadZone(cursor, minutes))
            return false;
        AddMinutes(read, -minutes);
    }
    else if (cursor.Skip(L"-\u2010\u2212"))
    {
        if (!ReadZone(cursor, minutes))
            return false;
        AddMinutes(read, minutes);
    }
    else
    {
        SYSTEMTIME universal = kNoTime;
        TzSpecificLocalTimeToSystemTime(nullptr, &read, &universal);
        read = universal;
    }
    time = read;
    return true;
}

} // namespace qx
