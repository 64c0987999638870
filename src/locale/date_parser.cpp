#include "locale/date_parser.h"

#include "containers/slist.h"
#include "core/critical_section.h"
#include "core/forever.h"
#include "locale/date_fields.h"
#include "locale/format_pattern.h"

#include <cstdint>

namespace qx
{

namespace
{

constexpr std::uint32_t kCaseless = 8;
constexpr std::size_t kMarkerOfFullForm = 7; // after three parts of the date and three parts of the time
constexpr std::size_t kMarkerOfTime = 4;

String UserFormat(LCTYPE type)
{
    wchar_t format[256];
    return GetLocaleInfoW(LOCALE_USER_DEFAULT, type, format, 256) > 0 ? format : L"";
}

// Returns the AM/PM marker in upper case, or an empty text if there is none.
String MarkerOf(const clsRegExMatchList& matches, const std::optional<std::size_t>& entry)
{
    if (!entry || *entry >= matches.Count())
        return {};
    String marker = matches[*entry].text;
    marker.TrimLeft();
    marker.MakeUpper();
    return marker;
}

} // namespace

DateSettings::DateSettings(const clsLocaleDateInfo& locale)
    : info(locale),
      timeFormat(UserFormat(LOCALE_STIMEFORMAT)),
      dateFormat(UserFormat(LOCALE_SSHORTDATE))
{
}

bool DateSettings::IsEqual(const DateSettings& other) const
{
    return info.dateOrder == other.info.dateOrder && info.dateSeparator == other.info.dateSeparator &&
           info.timeSeparator == other.info.timeSeparator && timeFormat == other.timeFormat &&
           dateFormat == other.dateFormat;
}

clsDateParser::Attempt::Attempt(const String& text, DateOrder dateOrder, std::optional<std::size_t> markerEntry)
    : pattern(text, kCaseless),
      order(dateOrder),
      marker(markerEntry)
{
}

void clsDateParser::AddTimeOnly(const String& pattern, std::optional<std::size_t> marker)
{
    _timesOnly.emplace_back(L"^" + pattern + L"$", _settings.info.dateOrder, marker);
}

void clsDateParser::AddFull(const String& date, const String& time, DateOrder order, std::optional<std::size_t> marker)
{
    _full.emplace_back(L"^" + date + L"(?:[ ,]+" + time + L")?$", order, marker);
}

clsDateParser::clsDateParser(const DateSettings& settings) : _settings(settings)
{
    const String dateSeparator = clsRegEx::Quote(settings.info.dateSeparator);
    const String timeSeparator = clsRegEx::Quote(settings.info.timeSeparator);
    const String optionalNumber = L"(?:(\\d+)\\s*" + dateSeparator + L"\\s*)?";
    const String afterHour = timeSeparator + L"([0-5]?[0-9])(?:" + timeSeparator + L"([0-5]?[0-9]))?";

    const TimePattern timePatternFormat = PatternOfTimeFormat(settings.timeFormat);
    const String datePatternFormat = PatternOfDateFormat(settings.dateFormat);
    const String datePatternSeparated = optionalNumber + optionalNumber + L"(\\d+)?";
    const String datePatternISO = L"(\\d+)\\s*-\\s*(0?[1-9]|1[012])(?:\\s*-\\s*(0?[1-9]|1[0-9]|2[0-9]|3[01])?)";
    const String datePatternDotted = L"(?:(\\d+)\\s*\\.\\s*)?(?:(\\d+)\\s*\\.\\s*)?(\\d+)?";
    const String timePatternLocale = L"([01]?[0-9]|2[0-3])" + afterHour;
    const String timePattern12 = L"(0?[1-9]|1[012])" + afterHour + L" *([AP]M)";
    const String timePatternColon = L"([01]?[0-9]|2[0-3]):([0-5]?[0-9])(?::([0-5]?[0-9]))?";

    // The pattern of the user's format has a group for the AM/PM marker only if the format contains letters for it.
    // Otherwise a time that matches the format is used unchanged: 12:05:12 is a time after noon.
    AddTimeOnly(timePatternFormat.text, timePatternFormat.marker);
    AddTimeOnly(timePattern12, kMarkerOfTime);
    AddTimeOnly(timePatternLocale, std::nullopt);

    const DateOrder order = settings.info.dateOrder;
    AddFull(datePatternFormat, timePatternFormat.text, order, std::nullopt);
    AddFull(datePatternSeparated, timePatternLocale, order, std::nullopt);
    AddFull(datePatternSeparated, timePattern12, order, kMarkerOfFullForm);
    AddFull(datePatternISO, timePatternLocale, DateOrder::YearMonthDay, std::nullopt);
    AddFull(datePatternISO, timePattern12, DateOrder::YearMonthDay, kMarkerOfFullForm);
    AddFull(datePatternDotted, timePatternColon, DateOrder::DayMonthYear, std::nullopt);
}

std::int32_t clsDateParser::Parse(const String& text, std::uint32_t flags, const SYSTEMTIME& today, SYSTEMTIME& time)
{
    time = {};
    clsRegExMatchList matches;
    if ((flags & LOCDATE_ALLOW_TIME_ONLY) != 0)
        for (Attempt& attempt : _timesOnly)
            if (attempt.pattern.Match(text, &matches))
            {
                SetTimeOnly(matches, flags, time);
                ApplyMarker(MarkerOf(matches, attempt.marker), time);
                return 0;
            }
    for (Attempt& attempt : _full)
        if (attempt.pattern.Match(text, &matches))
        {
            const std::int32_t result = SetDateAndTime(matches, attempt.order, flags, today, time);
            ApplyMarker(MarkerOf(matches, attempt.marker), time);
            return result;
        }
    return 0;
}

std::shared_ptr<clsDateParser> FindDateParser(const DateSettings& settings)
{
    constexpr std::size_t kMostParsers = 8;
    struct Known
    {
        clsCriticalSection lock;
        std::deque<std::shared_ptr<clsDateParser>> parsers; // most recent first
    };
    static Known& known = MakeForever<Known>();
    const clsCriticalSectionLock lock(known.lock);
    for (const std::shared_ptr<clsDateParser>& parser : known.parsers)
        if (parser->Settings().IsEqual(settings))
            return parser;
    if (known.parsers.size() == kMostParsers)
        known.parsers.pop_back();
    return known.parsers.emplace_front(std::make_shared<clsDateParser>(settings));
}

std::int32_t ParseLocaleDate(LCID locale, const wchar_t* text, std::uint32_t flags, SYSTEMTIME& time)
{
    time = {};
    SYSTEMTIME now;
    GetLocalTime(&now);
    String trimmed(text);
    trimmed.TrimLeft();
    trimmed.TrimRight();
    if (trimmed.IsEmpty())
    {
        time = now;
        return 0;
    }
    const clsLocaleDateInfo& info = DefaultDateInfo();
    const DateSettings settings(info.lcid == locale ? info : clsLocaleDateInfo(locale));
    return FindDateParser(settings)->Parse(trimmed, flags, now, time);
}

} // namespace qx
