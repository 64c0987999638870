// A profile that shows when it is put together from two.
#pragma once

#include "exports/profile/support.h"

#include <string>

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
    struct Seen
    {
        std::string letter;
        int leaves = 0;
        bool isMixed = false;
    } seen;
    ProfEnumW(
        job, nullptr,
        [](HPROFJOB, const wchar_t* name, const wchar_t* value, HPROFLIST, void* context) -> int32_t
        {
            Seen& all = *static_cast<Seen*>(context);
            if (std::wstring_view(name) != L"leaf")
                return 1;
            const std::string text = Utf8(value);
            all.isMixed |= text.size() != 40 || (all.leaves++ != 0 && text.substr(0, 1) != all.letter);
            all.letter = text.substr(0, 1);
            return 1;
        },
        &seen);
    if (seen.isMixed)
        return "mixed";
    if (Value(job, L"count") != std::to_string(seen.leaves) || Value(job, L"end") != std::to_string(seen.leaves))
        return "half: " + std::to_string(seen.leaves) + " of " + Value(job, L"count") + " and " + Value(job, L"end");
    return seen.letter;
}

} // namespace profiletest
