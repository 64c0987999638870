// Which character stands for one that a code page lacks.
#pragma once

#include <vector>

namespace qxplatform
{

enum class BestFit
{
    AsConverter, // only what ICU's tables of the page tell
    LatinOne,    // the part of Common below U+0100
    Common,
    Latin
};

struct Similar
{
    wchar_t unit;
    wchar_t similar;
};

// In the order of preference: a later row of the same unit is for pages that lack the earlier one's character.
std::vector<Similar> SimilarCharacters(BestFit bestFit);

} // namespace qxplatform
