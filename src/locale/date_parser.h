// Dates and times as users type them.
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

constexpr std::int32_t kDateDefaulted = -52; // or a date that doesn't exist
constexpr WORD kNotGiven = 0xFFFF;           // what a field holds that the text doesn't give

// All that a text's meaning depends on beside the flags and the present day.
struct DateSettings
{
    // Of the locale; the formats are always those of the user's.
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

// The patterns of one set of settings, tried in a fixed order: the first one that matches tells the meaning. They are
// compiled at their first use. Objects may be shared by threads.
class clsDateParser
{
public:
    explicit clsDateParser(const DateSettings& settings);

    const DateSettings& Settings() const { return _settings; }

    // `text` is not empty and has no blanks at its ends. 0 or kDateDefaulted; the time is all zeros if nothing matches.
    std::int32_t Parse(const String& text, std::uint32_t flags, const SYSTEMTIME& today, SYSTEMTIME& time);

private:
    struct Attempt
    {
        Attempt(const String& pattern, DateOrder dateOrder, std::optional<std::size_t> markerEntry);

        clsRegEx pattern;
        DateOrder order;
        std::optional<std::size_t> marker; // the entry that tells the half of the day
    };

    void AddTimeOnly(const String& pattern, std::optional<std::size_t> marker);
    void AddFull(const String& date, const String& time, DateOrder order, std::optional<std::size_t> marker);

    const DateSettings _settings;
    std::deque<Attempt> _timesOnly; // which leave their elements where they are
    std::deque<Attempt> _full;
};

// Those of the latest settings are kept.
std::shared_ptr<clsDateParser> FindDateParser(const DateSettings& settings);

// A text in the forms of a locale; of a time alone where the flags allow it. An empty one is the present local time.
std::int32_t ParseLocaleDate(LCID locale, const wchar_t* text, std::uint32_t flags, SYSTEMTIME& time);

} // namespace qx
