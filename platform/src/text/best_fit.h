// Similar characters for characters that a code page lacks.
#pragma once

#include <vector>

namespace qxplatform
{

enum class BestFit
{
    AsConverter, // only ICU's tables of the page
    LatinOne,    // the part of Common below U+0100
    Common,
    Latin
};

struct Similar
{
    wchar_t unit;
    wchar_t similar;
};

// In order of preference: later rows of the same unit are for pages that lack the character of the earlier row.
std::vector<Similar> SimilarCharacters(BestFit bestFit);

} // namespace qxplatform
