// Formats times for comparison in tests.
#pragma once

#include <windows.h>

#include <cstdio>
#include <string>

namespace qxtest
{

// Returns for example "2018-12-31 23:59:58", with -- for a missing field.
inline std::string Show(const SYSTEMTIME& time)
{
    const auto part = [](WORD value, const char* format)
    {
        char text[8];
        std::snprintf(text, sizeof text, format, value);
        return value == 0xFFFF ? std::string("--") : std::string(text);
    };
    return part(time.wYear, "%04d") + '-' + part(time.wMonth, "%02d") + '-' + part(time.wDay, "%02d") + ' ' +
           part(time.wHour, "%02d") + ':' + part(time.wMinute, "%02d") + ':' + part(time.wSecond, "%02d");
}

} // namespace qxtest
