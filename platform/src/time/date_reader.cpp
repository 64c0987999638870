#include "time/date_reader.h"

#include <sysinfoapi.h>

#include <algorithm>
#include <chrono>
#include <initializer_list>
#include <optional>
#include <string>

#include "text/date_pictures.h"
#include "time/date_words.h"
#include "time/pictures.h"

namespace qxplatform
{

namespace
{

constexpr int kLastYear = 9999;
constexpr int kLastYearOfTwoDigits = 2049; // as in all of automation

// The fields of a date and time as parsed: numbers and the month name.
struct Parts
{
    int numbers[3];
    int count = 0;
    int month = 0;
    std::optional<SYSTEMTIME> time;
};

class DateReader
{
public:
    DateReader(std::u16string_view text, const Locale& locale)
        : _rest(text),
          _locale(locale),
          _dotIsOfDates(DateSeparatorOf(PicturesOf(locale).dateOfNumbers).find(u'.') != std::u16string::npos)
    {
    }

    bool Read(Parts& parts)
    {
        for (SkipBlanks(); !_rest.empty(); SkipBlanks())
            if (!(IsDigit() ? ReadNumber(parts) : ReadWord(parts)))
                return false;
        return !_endsWithSeparator;
    }

private:
    bool IsDigit() const { return !_rest.empty() && _rest.front() >= u'0' && _rest.front() <= u'9'; }

    void SkipBlanks() { _rest.remove_prefix(std::min(_rest.find_first_not_of(u" \t\u00a0\u202f"), _rest.size())); }

    bool Skip(std::u16string_view units)
    {
        if (_rest.empty() || units.find(_rest.front()) == units.npos)
            return false;
        _rest.remove_prefix(1);
        return true;
    }

    // Reads a number of at most four digits: longer numbers are not part of a date.
    bool TakeNumber(int& number)
    {
        number = 0;
        int digits = 0;
        for (; IsDigit() && digits < 5; ++digits, _rest.remove_prefix(1))
            number = number * 10 + (_rest.front() - u'0');
        return digits >= 1 && digits <= 4;
    }

    const DateWord* PeekDayHalf() const
    {
        const DateWord* const word = FindDateWord(_locale, _rest);
        return word != nullptr && word->kind == DateWord::kDayHalf ? word : nullptr;
    }

    bool IsTimeSeparatorNext() const
    {
        return !_rest.empty() && (_rest.front() == u':' || (_rest.front() == u'.' && !_dotIsOfDates));
    }

    bool SkipTimeSeparator()
    {
        SkipBlanks();
        if (!IsTimeSeparatorNext())
            return false;
        _rest.remove_prefix(1);
        SkipBlanks();
        return true;
    }

    bool ReadNumber(Parts& parts)
    {
        int number = 0;
        _endsWithSeparator = false;
        if (!TakeNumber(number))
            return false;
        SkipBlanks();
        if (IsTimeSeparatorNext() || PeekDayHalf() != nullptr)
            return ReadTime(number, parts);
        if (parts.count == 3)
            return false;
        parts.numbers[parts.count++] = number;
        // A comma ends the preceding part; any other separator must be followed by another part.
        if (!Skip(u","))
            _endsWithSeparator = Skip(_dotIsOfDates ? u"/-." : u"/-");
        return true;
    }

    bool ReadTime(int hour, Parts& parts)
    {
        int minute = 0;
        int second = 0;
        if (parts.time || (SkipTimeSeparator() && !TakeNumber(minute)) || (SkipTimeSeparator() && !TakeNumber(second)))
            return false;
        SkipBlanks();
        const DateWord* const half = PeekDayHalf();
        if (half != nullptr)
        {
            _rest.remove_prefix(half->text.size());
            Skip(u".");
        }
        if (hour > 23 || minute > 59 || second > 59 || IsTimeSeparatorNext())
            return false;
        if (half != nullptr && hour <= 12)
            hour = hour % 12 + 12 * half->number;
        Skip(u",");
        parts.time =
            SYSTEMTIME{0, 0, 0, 0, static_cast<WORD>(hour), static_cast<WORD>(minute), static_cast<WORD>(second), 0};
        return true;
    }

    bool ReadWord(Parts& parts)
    {
        const DateWord* const word = FindDateWord(_locale, _rest);
        if (word == nullptr || word->kind == DateWord::kDayHalf || (word->kind == DateWord::kMonth && parts.month != 0))
            return false;
        _rest.remove_prefix(word->text.size());
        Skip(u".");
        Skip(u",/-");
        if (word->kind == DateWord::kMonth)
            parts.month = word->number;
        _endsWithSeparator = false;
        return true;
    }

    std::u16string_view _rest;
    const Locale& _locale;
    bool _dotIsOfDates;
    bool _endsWithSeparator = false;
};

int FullYear(int year)
{
    if (year > 99)
        return year;
    const int inLastCentury = kLastYearOfTwoDigits / 100 * 100 + year;
    return inLastCentury > kLastYearOfTwoDigits ? inLastCentury - 100 : inLastCentury;
}

int PresentYear()
{
    SYSTEMTIME now;
    GetLocalTime(&now);
    return now.wYear;
}

bool SetDate(int year, int month, int day, SYSTEMTIME& time)
{
    using namespace std::chrono;
    if (month < 1 || month > 12 || day < 1 || day > 31 || FullYear(year) > kLastYear)
        return false;
    const auto date = std::chrono::year(FullYear(year)) / month / day;
    if (!date.ok())
        return false;
    time.wYear = static_cast<WORD>(FullYear(year));
    time.wMonth = static_cast<WORD>(month);
    time.wDay = static_cast<WORD>(day);
    return true;
}

// Tries the orders of the numbers and uses the first valid date. Each order has one letter for each number in the text.
bool SetInOrder(const Parts& parts, std::initializer_list<std::u16string_view> orders, SYSTEMTIME& time)
{
    for (const std::u16string_view order : orders)
    {
        int year = PresentYear();
        int month = parts.month;
        int day = 1;
        for (int i = 0; i < parts.count; ++i)
        {
            const char16_t letter = order[static_cast<std::size_t>(i)];
            (letter == u'y' ? year : letter == u'M' ? month : day) = parts.numbers[i];
        }
        if (SetDate(year, month, day, time))
            return true;
    }
    return false;
}

bool ResolveDate(const Parts& parts, const Locale& locale, SYSTEMTIME& time)
{
    const bool hasMonth = parts.month != 0;
    if (hasMonth && parts.count == 1)
        return SetInOrder(parts, {u"d", u"y"}, time);
    if (hasMonth && parts.count == 2)
        return SetInOrder(parts, {u"dy", u"yd"}, time);
    if (hasMonth || parts.count < 2)
        return false;
    const std::u16string& picture = PicturesOf(locale).dateOfNumbers;
    const char16_t first = picture[std::min(picture.find_first_of(u"dMy"), picture.size() - 1)];
    if (parts.count == 2)
        return first == u'd' ? SetInOrder(parts, {u"dM", u"Md", u"My", u"yM"}, time)
                             : SetInOrder(parts, {u"Md", u"dM", u"yM", u"My"}, time);
    switch (first)
    {
    case u'd':
        return SetInOrder(parts, {u"dMy", u"yMd", u"Mdy", u"ydM"}, time);
    case u'M':
        return SetInOrder(parts, {u"Mdy", u"yMd", u"dMy", u"ydM"}, time);
    default:
        return SetInOrder(parts, {u"yMd", u"Mdy", u"dMy", u"ydM"}, time);
    }
}

} // namespace

bool ReadDateText(std::u16string_view text, const Locale& locale, ReadDate& result)
{
    Parts parts;
    if (!DateReader(text, locale).Read(parts))
        return false;
    result.time = parts.time.value_or(SYSTEMTIME{});
    result.hasDate = parts.count != 0 || parts.month != 0;
    return result.hasDate ? ResolveDate(parts, locale, result.time) : parts.time.has_value();
}

} // namespace qxplatform
