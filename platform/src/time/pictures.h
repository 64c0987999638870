// The pictures of a locale's dates and times. ICU takes long to make them and callers ask for them at each date, so
// they are made once.
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
    std::u16string morning; // what stands for tt
    std::u16string afternoon;
};

// Of one that FindLocale gave; lives as long as the process.
const Pictures& PicturesOf(const Locale& locale);

} // namespace qxplatform
