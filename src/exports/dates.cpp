// Dates and times as text, and time zones.
#include <qxut23/dates.h>

#include "core/variant/variant.h"
#include "exports/guard.h"
#include "locale/date_parser.h"
#include "locale/date_text.h"
#include "locale/machine_date.h"
#include "locale/time_zone.h"

#include <cstdint>

using namespace qx;

namespace
{

constexpr std::int32_t kDone = 1;
constexpr std::int32_t kFailed = 0;

void CopyCut(const String& text, QXWCHAR* buffer, std::uint32_t size)
{
    if (buffer == nullptr || size == 0)
        return;
    const String cut = text.Left(size - 1);
    wmemcpy(buffer, cut.Text(), cut.Length() + 1);
}

} // namespace

std::int32_t UtilLocSystemTimeFromLocaleString(
    std::uint32_t locale, const QXWCHAR* text, SYSTEMTIME* time, std::uint32_t flags)
{
    if (time == nullptr)
        return 0;
    return Guarded(0, [&] { return ParseLocaleDate(locale, text, flags, *time); });
}

std::int32_t UtilLocLocaleStringFromSystemTime(std::uint32_t locale, const SYSTEMTIME* time, VARIANT* text)
{
    return UtilLocLocaleStringFromSystemTimeEx(locale, time, text, QXUT_LOCTEXT_TIME | QXUT_LOCTEXT_DATE);
}

std::int32_t UtilLocLocaleStringFromSystemTimeEx(
    std::uint32_t locale, const SYSTEMTIME* time, VARIANT* text, std::uint32_t flags)
{
    if (text != nullptr)
        Guarded([&] { clsVariant(LocaleDateText(locale, time, flags)).CopyTo(*text); });
    return 0;
}

std::int32_t UtilDateTimeFromLocaleString(
    const QXWCHAR* text, QXWCHAR* compact, std::uint32_t compactChars, std::uint32_t flags)
{
    CopyCut(String(), compact, compactChars);
    if (text == nullptr)
        return kFailed;
    return Guarded(kFailed,
        [&]
        {
            String result;
            if (!CompactFromLocaleText(text, flags, result))
                return kFailed;
            CopyCut(result, compact, compactChars);
            return kDone;
        });
}

std::int32_t UtilDateTimeToLocaleString(const QXWCHAR* compact, QXWCHAR* text, std::uint32_t textChars)
{
    return Guarded(kFailed,
        [&]
        {
            const String result = LocaleTextFromCompact(compact);
            CopyCut(String(), text, textChars);
            if (textChars < result.Length())
                return kFailed;
            CopyCut(result, text, textChars);
            return kDone;
        });
}

std::int32_t UtilLocDateTimeToSYSTEMTIME(const QXWCHAR* text, SYSTEMTIME* time)
{
    if (time != nullptr)
        Guarded([&] { *time = ReadMachineDate(text); });
    return 0;
}

std::int32_t UtilLocConvertLocalTimeToUTCTime(SYSTEMTIME* time)
{
    return time == nullptr ? E_INVALIDARG : Guarded(E_INVALIDARG, [&] { return ConvertLocalTimeToUTC(*time); });
}

std::int32_t UtilLocConvertUTCTimeToLocalTime(SYSTEMTIME* time)
{
    return time == nullptr ? E_INVALIDARG : Guarded(E_INVALIDARG, [&] { return ConvertUTCToLocalTime(*time); });
}

std::int32_t UtilLocGetDSTStartAndEndInUTC(std::uint32_t year, SYSTEMTIME* start, SYSTEMTIME* end)
{
    return Guarded(0,
        [&]
        {
            SYSTEMTIME first, last;
            GetDSTStartAndEndInUTC(year, first, last);
            if (start != nullptr)
                *start = first;
            if (end != nullptr)
                *end = last;
            return 0;
        });
}
