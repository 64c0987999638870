// The words that may stand in a date.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "text/locale.h"

namespace qxplatform
{

struct DateWord
{
    enum Kind
    {
        kMonth,
        kDayOfWeek,
        kDayHalf
    };

    std::u16string text; // in capitals, without a dot at its end
    Kind kind;
    int number; // of the month from 1; of the half of the day from 0
};

// Of one that FindLocale gave; lives as long as the process. The longest ones come first.
const std::vector<DateWord>& DateWordsOf(const Locale& locale);

// The word at the begin of a text, as a whole; null if there is none.
const DateWord* FindDateWord(const Locale& locale, std::u16string_view text);

} // namespace qxplatform
