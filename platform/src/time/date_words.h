// The words that may occur in a date.
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

    std::u16string text; // in capitals, without a trailing dot
    Kind kind;
    int number; // months from 1, AM and PM from 0
};

// Returns the words of a locale, the longest ones first. `locale` must come from FindLocale. The result is valid until
// the process ends.
const std::vector<DateWord>& DateWordsOf(const Locale& locale);

// Returns the whole word at the beginning of a text, or null.
const DateWord* FindDateWord(const Locale& locale, std::u16string_view text);

} // namespace qxplatform
