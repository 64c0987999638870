// A profile whose contents reveal a mixture of two saves.
#pragma once

#include "exports/profile/support.h"

namespace profiletest
{

// Many leaves with the same letter; the first and the last leaf contain their number.
inline void FillWhole(HPROFJOB job, char letter, int leaves)
{
    ProfEmptyList(job, nullptr);
    ProfAppendStringW(job, nullptr, L"count", Wide(std::to_string(leaves)));
    const Wide value(40, static_cast<wchar_t>(letter));
    for (int i = 0; i < leaves; ++i)
        ProfAppendStringW(job, nullptr, L"leaf", value);
    ProfAppendStringW(job, nullptr, L"end", Wide(std::to_string(leaves)));
}

// Returns the letter, or a description of the inconsistency.
inline std::string LetterOfWhole(HPROFJOB job)
{
    const std::string letter = Value(job, L"leaf").substr(0, 1);
    const Job expected;
    FillWhole(expected, letter.empty() ? ' ' : letter[0], std::atoi(Value(job, L"count").c_str()));
    return Tree(job) == Tree(expected) ? letter : "mixed, or cut off: " + Tree(job);
}

} // namespace profiletest
