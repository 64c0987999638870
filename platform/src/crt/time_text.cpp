#include "bounded_text.h"
#include "invalid_parameter.h"

#include <errno.h>
#include <time.h>
#include <wchar.h>

#include <cstdlib>

using namespace qxplatform;

namespace
{

void AppendNumber(BoundedText& text, int value, int digits)
{
    int unit = 1;
    for (int i = 1; i < digits; ++i)
        unit *= 10;
    for (; unit != 0; unit /= 10)
        text.Append(static_cast<wchar_t>(L'0' + std::abs(value / unit % 10)));
}

bool AppendConversion(BoundedText& text, wchar_t letter, const tm& time)
{
    switch (letter)
    {
    case L'y':
        AppendNumber(text, time.tm_year, 2);
        return true;
    case L'Y':
        AppendNumber(text, time.tm_year + 1900, 4);
        return true;
    case L'm':
        AppendNumber(text, time.tm_mon + 1, 2);
        return true;
    case L'd':
        AppendNumber(text, time.tm_mday, 2);
        return true;
    case L'H':
        AppendNumber(text, time.tm_hour, 2);
        return true;
    case L'M':
        AppendNumber(text, time.tm_min, 2);
        return true;
    case L'S':
        AppendNumber(text, time.tm_sec, 2);
        return true;
    case L'%':
        text.Append(L'%');
        return true;
    default:
        return false;
    }
}

} // namespace

std::size_t wcsftime(wchar_t* target, std::size_t size, const wchar_t* format, const tm* time) noexcept
{
    BoundedText text(target, size);
    for (; *format != 0; ++format)
    {
        if (*format != L'%')
            text.Append(*format);
        else if (!AppendConversion(text, *++format, *time))
        {
            RefuseParameter(EINVAL);
            return 0;
        }
    }
    if (text.Length() >= size)
        return 0;
    target[text.Length()] = 0;
    return text.Length();
}
