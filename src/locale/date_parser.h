// Parses dates and times that users type.
#pragma once

#include "core/pattern/regex.h"
#include "core/text/string.h"
#include "locale/locale_date_info.h"

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>

namespace qx
{

enum : std::uint32_t
{
    LOCDATE_EXPAND_YEAR = 0x01,
    LOCDATE_REPORT_DEFAULT = 0x02,
    LOCDATE_ZERO_MISSING = 0x04,
    LOCDATE_ALLOW_TIME_ONLY = 0x08,
    LOCDATE_MARK_NO_TIME = 0x10
};

constexpr std::int32_t kDateDefaulted = -52; // also for a date that doesn't exist
constexpr WORD kNotGiven = 0xFFFF;           // the value of a field that the text doesn't specify

// All settings that determine the meaning of a text, apart from the flags and the current date.
struct DateSettings
{
    // Uses the order and the separators of the locale. The formats are always those of the user's locale.
    explicit DateSettings(const clsLocaleDateInfo& locale);
    DateSettings(const clsLocaleDateInfo& locale, const String& time, const String& date)
        : info(locale),
          timeFormat(time),
          dateFormat(date)
    {
    }
    bool IsEqual(const DateSettings& other) const;

    clsLocaleDateInfo info;
    String timeFormat;
    String dateFormat;
};

// The patterns for one set of settings. They are tried in a fixed order, and the first match determines the meaning.
// They are compiled at first use. Several threads may share an object.
class clsDateParser
{
public:
    explicit clsDateParser(const DateSettings& settings);

    const DateSettings& Settings() const { return _settings; }

    // `text` must not be empty and must not start or end with spaces. Returns 0 or kDateDefaulted. If nothing matches,
    // all fields of the time are 0.
    std::int32_t Parse(const String& text, std::uint32_t flags, const SYSTEMTIME& today, SYSTEMTIME& time);

private:
    struct Attempt
    {
        Attempt(const String& pattern, DateOrder dateOrder, std::optional<std::size_t> markerEntry);

        clsRegEx pattern;
        DateOrder order;
        std::optional<std::size_t> marker; // the group of the AM/PM marker
    };

    void AddTimeOnly(const String& pattern, std::optional<std::size_t> marker);
    void AddFull(const String& date, const String& time, DateOrder order, std::optional<std::size_t> marker);

    const DateSettings _settings;
    std::deque<Attempt> _timesOnly; // a deque, because it doesn't move its elements
    std::deque<Attempt> _full;
};

// Returns a parser for the settings. The parsers of the most recent settings are cached.
std::shared_ptr<clsDateParser> FindDateParser(const DateSettings& settings);

// Parses a text in the formats of a locale. The text may be a time without a date if the flags allow it. An empty text
// is the current local time.
std::int32_t ParseLocaleDate(LCID locale, const wchar_t* text, std::uint32_t flags, SYSTEMTIME& time);

} // namespace qx
