// A profile that shows when it is put together from two.
#pragma once

#include "exports/profile/support.h"

namespace profiletest
{

// Many leaves that all hold the one letter, and their number as the first and the last leaf.
inline void FillWhole(HPROFJOB job, char letter, int leaves)
{
    ProfEmptyList(job, nullptr);
    ProfAppendStringW(job, nullptr, L"count", Wide(std::to_string(leaves)));
    const Wide value(40, static_cast<wchar_t>(letter));
    for (int i = 0; i < leaves; ++i)
        ProfAppendStringW(job, nullptr, L"leaf", value);
    ProfAppendStringW(job, nullptr, L"end", Wide(std::to_string(leaves)));
}

// The letter, or what is wrong.
inline std::string LetterOfWhole(HPROFJOB job)
{
    const std::string letter = Value(job, L"leaf").substr(0, 1);
    const Job expected;
    FillWhole(expected, letter.empty() ? ' ' : letter[0], std::atoi(Value(job, L"count").c_str()));
    return Tree(job) == Tree(expected) ? letter : "mixed, or cut off: " + Tree(job);
}

} // namespace profiletest
