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

// Returns replacements in order of preference: a later row for the same unit is for pages that lack the character of
// the earlier row.
std::vector<Similar> SimilarCharacters(BestFit bestFit);

} // namespace qxplatform
