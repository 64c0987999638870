#include "locale/machine_date.h"

#include "core/text/string.h"
#include "core/variant/variant.h"
#include "locale/date_cursor.h"
#include "locale/time_arithmetic.h"

#include <oleauto.h>

#include <algorithm>

namespace qx
{

namespace
{

constexpr std::size_t kCompactLength = 14;

// Returns the value of the leading digits of a part. The part may be truncated or contain other characters.
WORD PartAt(std::wstring_view text, std::size_t offset, std::size_t length)
{
    unsigned value = 0;
    for (const wchar_t c : offset < text.size() ? text.substr(offset, length) : std::wstring_view())
    {
        if (!IsDecimalDigit(c))
            break;
        value = value * 10 + static_cast<unsigned>(c - L'0');
    }
    return static_cast<WORD>(value);
}

std::wstring_view WithoutBlanks(std::wstring_view text)
{
    const std::size_t begin = std::min(text.find_first_not_of(L' '), text.size());
    const std::size_t end = text.find_last_not_of(L' ') + 1; // 0 if there are only spaces
    return text.substr(begin, end > begin ? end - begin : 0);
}

bool IsLikely(const SYSTEMTIME& time)
{
    return time.wMonth >= 1 && time.wMonth <= 12 && time.wDay >= 1 && time.wDay <= 31 && time.wHour <= 24 &&
           time.wMinute <= 59 && time.wSecond <= 59;
}

SYSTEMTIME ReadBySystem(const String& text)
{
    const clsVariant given(text);
    VARIANT date;
    VariantInit(&date);
    SYSTEMTIME time;
    if (FAILED(VariantChangeType(&date, const_cast<VARIANT*>(&given.Get()), 0, VT_DATE)) ||
        !VariantTimeToSystemTime(date.date, &time))
        return kNoTime;
    return time;
}

} // namespace

bool IsAllDigits(std::wstring_view text)
{
    return std::all_of(text.begin(), text.end(), IsDecimalDigit);
}

SYSTEMTIME SplitCompactDate(std::wstring_view digits)
{
    SYSTEMTIME time{};
    time.wYear = PartAt(digits, 0, 4);
    time.wMonth = PartAt(digits, 4, 2);
    time.wDayOfWeek = 0xFFFF;
    time.wDay = PartAt(digits, 6, 2);
    time.wHour = PartAt(digits, 8, 2);
    time.wMinute = PartAt(digits, 10, 2);
    time.wSecond = PartAt(digits, 12, 2);
    return time;
}

SYSTEMTIME ReadMachineDate(const wchar_t* text)
{
    const std::wstring_view trimmed = WithoutBlanks(text != nullptr ? text : L"");
    SYSTEMTIME time{};
    if (trimmed.empty())
    {
        GetLocalTime(&time);
        return time;
    }
    if (trimmed.size() <= kCompactLength && IsAllDigits(trimmed))
        return SplitCompactDate(trimmed);
    if (ReadRFC822Date(trimmed, time) && IsLikely(time))
        return time;
    if (ReadISO8601Date(trimmed, time) && IsLikely(time))
        return time;
    return ReadBySystem(String(trimmed));
}

} // namespace qx
