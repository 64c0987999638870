#include "text/date_pictures.h"

#include <unicode/udatpg.h>

#include <algorithm>
#include <cstdint>
#include <memory>

#include "base/fork_gate.h"
#include "text/icu_text.h"
#include "text/language_supplement.h"

namespace qxplatform
{

namespace
{

struct ClosePatternGenerator
{
    void operator()(UDateTimePatternGenerator* generator) const { udatpg_close(generator); }
};
using PatternGenerator = std::unique_ptr<UDateTimePatternGenerator, ClosePatternGenerator>;

std::string GregorianName(const Locale& locale)
{
    return IcuName(locale) + "@calendar=gregorian";
}

std::u16string PatternOf(const Locale& locale, UDateFormatStyle time, UDateFormatStyle date)
{
    const ForkHold hold; // no fork while ICU holds its own locks
    UErrorCode status = U_ZERO_ERROR;
    const DateFormat format(udat_open(time, date, GregorianName(locale).c_str(), nullptr, 0, nullptr, 0, &status));
    if (format == nullptr)
        return {};
    return IcuText([&](UChar* buffer, std::int32_t size, UErrorCode* result)
        { return udat_toPattern(format.get(), false, buffer, size, result); });
}

std::u16string PatternOfFields(const Locale& locale, std::u16string_view fields)
{
    const ForkHold hold; // no fork while ICU holds its own locks
    UErrorCode status = U_ZERO_ERROR;
    const PatternGenerator generator(udatpg_open(GregorianName(locale).c_str(), &status));
    if (U_FAILURE(status))
        return {};
    return IcuText(
        [&](UChar* buffer, std::int32_t size, UErrorCode* result)
        {
            return udatpg_getBestPattern(
                generator.get(), fields.data(), static_cast<std::int32_t>(fields.size()), buffer, size, result);
        });
}

// Returns a letter of a CLDR pattern, repeated `count` times, in the system's picture language.
std::u16string PictureOf(char16_t letter, std::size_t count, DateStyle style)
{
    switch (letter)
    {
    case u'y':
    case u'u':
        return style == DateStyle::Short || count != 2 ? u"yyyy" : u"yy";
    case u'M':
    case u'L':
        return std::u16string(std::min<std::size_t>(count, 4), u'M');
    case u'E':
    case u'c':
        return count >= 4 ? u"dddd" : u"ddd";
    case u'a':
    case u'b':
    case u'B':
        return u"tt";
    case u'G':
        return u"gg";
    default:
        return std::u16string(count, letter);
    }
}

bool IsPatternLetter(char16_t unit)
{
    return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z');
}

// Returns the end of the run of equal letters that starts at `begin`.
std::size_t EndOfRun(std::u16string_view text, std::size_t begin)
{
    std::size_t end = begin + 1;
    while (end < text.size() && text[end] == text[begin])
        ++end;
    return end;
}

// Returns the first letter from `begin` on that represents a part of the date, outside quotes.
std::size_t FindPart(std::u16string_view picture, std::size_t begin)
{
    bool quoted = false;
    for (std::size_t i = begin; i < picture.size(); ++i)
    {
        quoted ^= picture[i] == u'\'';
        if (!quoted && IsPatternLetter(picture[i]))
            return i;
    }
    return picture.size();
}

// Converts a CLDR pattern to a picture. Quoted text has the same form in both languages.
std::u16string ToPicture(std::u16string_view pattern, DateStyle style)
{
    std::u16string picture;
    for (std::size_t i = 0; i < pattern.size();)
    {
        const std::size_t part = FindPart(pattern, i);
        picture += pattern.substr(i, part - i);
        if (part == pattern.size())
            break;
        i = EndOfRun(pattern, part);
        picture += PictureOf(pattern[part], i - part, style);
    }
    return picture;
}

// Replaces no-break blanks, because users type plain ones.
std::u16string PlainBlanks(std::u16string text)
{
    for (char16_t& unit : text)
        if (unit == u'\u00a0' || unit == u'\u202f')
            unit = u' ';
    return text;
}

std::u16string BehindPart(std::u16string_view picture, std::size_t part)
{
    if (part == picture.size())
        return {};
    const std::size_t begin = EndOfRun(picture, part);
    return std::u16string(picture.substr(begin, FindPart(picture, begin) - begin));
}

// Returns true for Polish, for which the system writes days with two digits.
bool IsPolish(const Locale& locale)
{
    return locale.icu.starts_with("pl_");
}

} // namespace

std::u16string DatePicture(const Locale& locale, DateStyle style)
{
    const LanguageSupplement& supplement = SupplementOf(locale);
    if (const char16_t* const own = style == DateStyle::Long ? supplement.longDate : supplement.shortDate)
        return own;
    switch (style)
    {
    case DateStyle::Short:
        if (IsPolish(locale))
            return u"dd.MM.yyyy";
        return PlainBlanks(ToPicture(PatternOf(locale, UDAT_NONE, UDAT_SHORT), style));
    case DateStyle::Long:
        return ToPicture(PatternOf(locale, UDAT_NONE, UDAT_FULL), style);
    case DateStyle::Numbers:
        break;
    }
    return ToPicture(PatternOfFields(locale, u"yMd"), style);
}

std::u16string TimePicture(const Locale& locale)
{
    if (const char16_t* const own = SupplementOf(locale).time)
        return own;
    return PlainBlanks(ToPicture(PatternOf(locale, UDAT_MEDIUM, UDAT_NONE), DateStyle::Long));
}

std::u16string DateSeparatorOf(std::u16string_view picture)
{
    return BehindPart(picture, FindPart(picture, 0));
}

std::u16string TimeSeparatorOf(std::u16string_view picture)
{
    std::size_t part = FindPart(picture, 0);
    while (part < picture.size() && picture[part] != u'h' && picture[part] != u'H')
        part = FindPart(picture, EndOfRun(picture, part));
    return BehindPart(picture, part);
}

} // namespace qxplatform
