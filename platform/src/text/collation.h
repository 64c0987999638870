// The order of texts in a locale.
#pragma once

#include <string_view>

#include "text/locale.h"

namespace qxplatform
{

// Hyphens and apostrophes count only between texts that are otherwise equal ("word sort"), or as any other sign.
enum class Signs
{
    WordSort,
    StringSort
};

// Below 0, 0 or above 0.
int Collate(const Locale& locale, Signs signs, std::wstring_view a, std::wstring_view b);

} // namespace qxplatform
