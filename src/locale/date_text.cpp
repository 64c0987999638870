#include "locale/date_text.h"

#include "locale/date_parser.h"
#include "locale/machine_date.h"

#include <algorithm>
#include <cstdint>

namespace qx
{

namespace
{

constexpr int kTextChars = 20; // size of the text of a date or a time, including the terminator
constexpr WORD kFirstYearOfSystem = 1601;
constexpr std::size_t kFormatChars = 256;

String DateText(LCID locale, const SYSTEMTIME* time)
{
    wchar_t buffer[kTextChars] = {};
    if (GetDateFormatW(locale, DATE_SHORTDATE, time, nullptr, buffer, kTextChars) > 0)
        return buffer;
    const bool isRefused = GetLastError() == ERROR_INVALID_PARAMETER;
    String text;
    if (isRefused && time != nullptr && time->wYear < kFirstYearOfSystem)
        text = FormatEarlyDate(clsDate(time->wDay, time->wMonth, time->wYear), locale, nullptr, kTextChars - 1);
    if (text.IsEmpty() && GetDateFormatW(locale, DATE_SHORTDATE, nullptr, nullptr, buffer, kTextChars) > 0)
        text = buffer;
    return text;
}

bool ShowsTime(const SYSTEMTIME* time)
{
    return time == nullptr || time->wHour != 0 || time->wMinute != 0 || time->wSecond != 0;
}

String TimeText(LCID locale, const SYSTEMTIME* time, std::uint32_t flags)
{
    DWORD systemFlags = 0;
    if ((flags & kTextTimeWithoutSeconds) != 0)
        systemFlags |= TIME_NOSECONDS;
    if ((flags & kTextTimeOf24Hours) != 0)
        systemFlags |= TIME_FORCE24HOURFORMAT;
    wchar_t buffer[kTextChars];
    if (GetTimeFormatW(locale, systemFlags, time, nullptr, buffer, kTextChars) <= 0 || !ShowsTime(time))
        return {};
    return buffer;
}

wchar_t LowerLetter(wchar_t c)
{
    return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c + (L'a' - L'A')) : c;
}

void AppendNumber(String& text, const wchar_t* format, int number)
{
    text.Append(String(String::kFormatted, format, number));
}

void AppendPart(String& text, wchar_t letter, std::size_t count, const clsDate& date)
{
    switch (letter)
    {
    case L'd':
        if (count <= 2)
            AppendNumber(text, count == 1 ? L"%d" : L"%02d", date.day);
        break;
    case L'm':
        AppendNumber(text, count == 1 ? L"%d" : L"%02d", date.month);
        break;
    default:
        if (count == 2)
            AppendNumber(text, L"%02d", date.year % 100);
        else
            AppendNumber(text, L"%04d", date.year);
        break;
    }
}

} // namespace

String FormatEarlyDate(const clsDate& date, LCID locale, const wchar_t* format, std::size_t maxChars)
{
    wchar_t ownFormat[kFormatChars] = {};
    if (format == nullptr)
    {
        GetLocaleInfoW(locale, LOCALE_SSHORTDATE, ownFormat, static_cast<int>(kFormatChars));
        format = ownFormat;
    }
    const String held(format, 0, kFormatChars - 1);
    String text;
    bool isQuoted = false;
    for (std::size_t i = 0; i < held.Length();)
    {
        const wchar_t letter = LowerLetter(held.CharAt(i));
        std::size_t end = i + 1;
        if (letter == L'"')
        {
            isQuoted = !isQuoted;
        }
        else if (isQuoted || (letter != L'd' && letter != L'm' && letter != L'y'))
        {
            text.Append(held.CharAt(i));
        }
        else
        {
            while (LowerLetter(held.CharAt(end)) == letter)
                ++end;
            AppendPart(text, letter, end - i, date);
        }
        i = end;
    }
    return text.Left(maxChars);
}

String LocaleDateText(LCID locale, const SYSTEMTIME* time, std::uint32_t flags)
{
    String text;
    if ((flags & kTextDate) != 0)
        text = DateText(locale, time);
    if ((flags & (kTextTimeWithoutSeconds | kTextTime)) != 0)
    {
        const String timeText = TimeText(locale, time, flags);
        if (!timeText.IsEmpty())
            text.AppendWithSeparator(L' ', timeText);
    }
    return text;
}

bool CompactFromLocaleText(const wchar_t* text, std::uint32_t flags, String& compact)
{
    constexpr std::size_t kDateLength = 8;
    constexpr std::size_t kFullLength = 14;
    compact = text;
    if ((compact.Length() == kDateLength || compact.Length() == kFullLength) && IsAllDigits(compact.View()))
    {
        if (compact.Length() == kDateLength)
            compact.Append(L"000000");
        return true;
    }
    compact.Empty();
    SYSTEMTIME time;
    if (ParseLocaleDate(LOCALE_USER_DEFAULT, text, flags, time) < 0)
        return false;
    if (time.wYear != 0)
        compact.Format(L"%04d%02d%02d%02d%02d%02d", time.wYear, time.wMonth, time.wDay,
            time.wHour < 24 ? time.wHour : 0, time.wMinute < 60 ? time.wMinute : 0,
            time.wSecond < 60 ? time.wSecond : 0);
    return true;
}

String LocaleTextFromCompact(const wchar_t* compact)
{
    String trimmed(compact);
    trimmed.TrimLeft();
    trimmed.TrimRight();
    if (trimmed.IsEmpty())
        return {};
    SYSTEMTIME time = SplitCompactDate(trimmed.View());
    // Incomplete parts of the time are ignored.
    const std::size_t length = trimmed.Length();
    if (length < 10)
        time.wHour = 0;
    if (length < 12)
        time.wMinute = 0;
    if (length < 14)
        time.wSecond = 0;
    return LocaleDateText(LOCALE_USER_DEFAULT, &time, kTextTime | kTextDate);
}

} // namespace qx
