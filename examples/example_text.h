// Text of the library as 8-bit text, for the examples' output.
#pragma once

#include <qxut23/base.h>

#include <string>

// Characters outside of ASCII become '?'.
inline std::string Narrow(const QXWCHAR* text)
{
    std::string narrow;
    for (; *text != 0; ++text)
        narrow += *text < 128 ? static_cast<char>(*text) : '?';
    return narrow;
}

// Shortens a text such as "module!function + 0x1f (file, line 12)" to "function (file, line 12)", with the file's name
// only, because paths and displacements differ between machines.
inline std::string ShortPlace(const std::string& text)
{
    std::string place = text.substr(text.find('!') + 1);
    const std::size_t displacement = place.find(" + 0x");
    const std::size_t source = place.find(" (", displacement == place.npos ? 0 : displacement);
    if (displacement == place.npos || source == place.npos)
        return place;
    const std::size_t folder = place.find_last_of("/\\");
    const std::size_t file = folder == place.npos || folder < source ? source + 2 : folder + 1;
    return place.substr(0, displacement) + " (" + place.substr(file);
}
