// Sort order of texts in a locale.
#pragma once

#include <string_view>

#include "text/locale.h"

namespace qxplatform
{

// Hyphens and apostrophes either decide only between otherwise equal texts ("word sort") or count like other symbols.
enum class Signs
{
    WordSort,
    StringSort
};

// Returns a negative value, 0 or a positive value.
int Collate(const Locale& locale, Signs signs, std::wstring_view a, std::wstring_view b);

} // namespace qxplatform
