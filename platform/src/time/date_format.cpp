#include "time/date_format.h"

#include <datetimeapi.h>
#include <sysinfoapi.h>
#include <timezoneapi.h>
#include <winnls.h>

#include <algorithm>
#include <string>

#include "base/fail.h"
#include "base/give_text.h"
#include "base/text.h"
#include "text/locale_data.h"
#include "time/picture.h"

using namespace qxplatform;

namespace
{

constexpr DWORD kLocaleOptions = LOCALE_NOUSEROVERRIDE | LOCALE_USE_CP_ACP;

std::u16string Digits(unsigned number, std::size_t atLeast)
{
    const std::string digits = std::to_string(number);
    std::u16string text(atLeast - std::min(atLeast, digits.size()), u'0');
    return text.append(digits.begin(), digits.end());
}

// Stores the date with its day of the week, and the time of day 0. Returns false if the date doesn't exist.
bool CheckedDate(const SYSTEMTIME& given, SYSTEMTIME& date)
{
    date = {given.wYear, given.wMonth, 0, given.wDay, 0, 0, 0, 0};
    FILETIME units;
    return SystemTimeToFileTime(&date, &units) && FileTimeToSystemTime(&units, &date);
}

bool IsTime(const SYSTEMTIME& time)
{
    return time.wHour < 24 && time.wMinute < 60 && time.wSecond < 60 && time.wMilliseconds < 1000;
}

std::u16string DateToken(const PicturePiece& token, const SYSTEMTIME& date, const Locale& locale, bool hasDay)
{
    switch (token.letter)
    {
    case u'd':
        return token.count < 3 ? Digits(date.wDay, token.count)
                               : DayName(locale, (date.wDayOfWeek + 6) % 7, token.count == 3);
    case u'M':
        if (token.count < 3)
            return Digits(date.wMonth, token.count);
        return (hasDay ? MonthNameInDate : MonthName)(locale, date.wMonth - 1, token.count == 3);
    case u'y':
        return token.count < 3 ? Digits(date.wYear % 100u, token.count) : Digits(date.wYear, 4);
    default:
        return EraName(locale);
    }
}

bool IsLeftOut(char16_t letter, DWORD flags)
{
    switch (letter)
    {
    case u'm':
        return (flags & TIME_NOMINUTESORSECONDS) != 0;
    case u's':
        return (flags & (TIME_NOMINUTESORSECONDS | TIME_NOSECONDS)) != 0;
    case u't':
        return (flags & TIME_NOTIMEMARKER) != 0;
    default:
        return false;
    }
}

std::u16string TimeToken(const PicturePiece& token, const SYSTEMTIME& time, const Pictures& pictures, DWORD flags)
{
    const std::size_t width = std::min<std::size_t>(token.count, 2);
    switch (token.letter)
    {
    case u'h':
        return Digits((flags & TIME_FORCE24HOURFORMAT) != 0 ? time.wHour : (time.wHour + 11u) % 12 + 1, width);
    case u'H':
        return Digits(time.wHour, width);
    case u'm':
        return Digits(time.wMinute, width);
    case u's':
        return Digits(time.wSecond, width);
    default:
        return (time.wHour < 12 ? pictures.morning : pictures.afternoon)
            .substr(0, token.count == 1 ? 1 : std::u16string::npos);
    }
}

// Checks the arguments of both functions. Returns null if they are invalid. `own` are the flags specific to one
// function.
const Locale* CheckedLocale(
    LCID lcid, DWORD flags, DWORD own, DWORD withoutPicture, LPCWSTR picture, LPWSTR buffer, int size)
{
    const Locale* const locale = FindLocale(lcid);
    if (locale == nullptr || size < 0 || (size > 0 && buffer == nullptr))
    {
        Fail(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    if ((flags & ~(own | kLocaleOptions)) != 0 ||
        (picture != nullptr && (flags & (withoutPicture | LOCALE_NOUSEROVERRIDE)) != 0))
    {
        Fail(ERROR_INVALID_FLAGS);
        return nullptr;
    }
    return locale;
}

SYSTEMTIME Now()
{
    SYSTEMTIME now;
    GetLocalTime(&now);
    return now;
}

} // namespace

namespace qxplatform
{

std::u16string FormatDate(const std::u16string& picture, const SYSTEMTIME& date, const Locale& locale)
{
    const std::vector<PicturePiece> pieces = SplitPicture(picture, u"dMyg");
    const bool hasDay = std::any_of(pieces.begin(), pieces.end(),
        [](const PicturePiece& piece) { return piece.letter == u'd' && piece.count < 3; });
    std::u16string text;
    for (const PicturePiece& piece : pieces)
        text += piece.letter == 0 ? piece.text : DateToken(piece, date, locale, hasDay);
    return text;
}

// If a part is omitted, so are the text between it and the previous part, and the text after it except blanks.
std::u16string FormatTime(const std::u16string& picture, const SYSTEMTIME& time, const Pictures& pictures, DWORD flags)
{
    std::u16string text;
    std::size_t endOfToken = 0;
    bool isBehindLeftOut = false;
    for (const PicturePiece& piece : SplitPicture(picture, u"hHmst"))
    {
        if (piece.letter == 0)
        {
            for (const char16_t unit : piece.text)
                if (!isBehindLeftOut || unit == u' ')
                    text += unit;
            continue;
        }
        isBehindLeftOut = IsLeftOut(piece.letter, flags);
        if (isBehindLeftOut)
        {
            // Keeps the text before the first part, because it doesn't belong to any part.
            text.resize(endOfToken);
            continue;
        }
        text += TimeToken(piece, time, pictures, flags);
        endOfToken = text.size();
    }
    return text;
}

} // namespace qxplatform

int WINAPI GetDateFormatW(
    LCID Locale, DWORD dwFlags, const SYSTEMTIME* lpDate, LPCWSTR lpFormat, LPWSTR lpDateStr, int cchDate)
{
    constexpr DWORD kStyles = DATE_SHORTDATE | DATE_LONGDATE;
    const qxplatform::Locale* const locale =
        CheckedLocale(Locale, dwFlags, kStyles, kStyles, lpFormat, lpDateStr, cchDate);
    if (locale == nullptr)
        return 0;
    if ((dwFlags & kStyles) == kStyles)
        return Fail(ERROR_INVALID_FLAGS);
    SYSTEMTIME date;
    if (!CheckedDate(lpDate != nullptr ? *lpDate : Now(), date))
        return Fail(ERROR_INVALID_PARAMETER);
    const Pictures& pictures = PicturesOf(*locale);
    const std::u16string& own = (dwFlags & DATE_LONGDATE) != 0 ? pictures.longDate : pictures.shortDate;
    const std::u16string picture = lpFormat != nullptr ? std::u16string(View(lpFormat)) : own;
    return GiveText(FormatDate(picture, date, *locale), lpDateStr, cchDate);
}

int WINAPI GetTimeFormatW(
    LCID Locale, DWORD dwFlags, const SYSTEMTIME* lpTime, LPCWSTR lpFormat, LPWSTR lpTimeStr, int cchTime)
{
    constexpr DWORD kFlags = TIME_NOMINUTESORSECONDS | TIME_NOSECONDS | TIME_NOTIMEMARKER | TIME_FORCE24HOURFORMAT;
    const qxplatform::Locale* const locale = CheckedLocale(Locale, dwFlags, kFlags, 0, lpFormat, lpTimeStr, cchTime);
    if (locale == nullptr)
        return 0;
    const SYSTEMTIME time = lpTime != nullptr ? *lpTime : Now();
    if (!IsTime(time))
        return Fail(ERROR_INVALID_PARAMETER);
    const Pictures& pictures = PicturesOf(*locale);
    const std::u16string picture = lpFormat != nullptr ? std::u16string(View(lpFormat)) : pictures.time;
    return GiveText(FormatTime(picture, time, pictures, dwFlags), lpTimeStr, cchTime);
}
