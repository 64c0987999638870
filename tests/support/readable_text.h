// Converts wide text to narrow text for use in tables.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace qxtest
{

// Returns a text in which ASCII characters are unchanged and other units are numbers.
inline std::string ReadableText(std::wstring_view text)
{
    std::string readable;
    for (const wchar_t unit : text)
    {
        char cell[8];
        std::snprintf(cell, sizeof cell, unit >= 0x20 && unit < 0x7f ? "%c" : "<%x>", unit);
        readable += cell;
    }
    return readable;
}

} // namespace qxtest
