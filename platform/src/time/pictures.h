// The pictures of a locale's dates and times. ICU creates them slowly and callers need them for each date, so they are
// cached.
#pragma once

#include <string>

#include "text/locale.h"

namespace qxplatform
{

struct Pictures
{
    std::u16string dateOfNumbers;
    std::u16string shortDate;
    std::u16string longDate;
    std::u16string time;
    std::u16string morning; // the text for tt
    std::u16string afternoon;
};

// Returns the pictures of a locale, which must come from FindLocale. The result is valid until the process ends.
const Pictures& PicturesOf(const Locale& locale);

} // namespace qxplatform
