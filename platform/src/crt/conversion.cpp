#include "conversion.h"

#include <wchar.h>

#include <limits>
#include <string_view>

namespace qxplatform
{

namespace
{

// Larger widths are reduced to this value: with both, the result is too long to be counted in an int.
constexpr std::size_t kGreatestWidth = std::numeric_limits<int>::max();

std::size_t ReadNumber(const wchar_t*& format)
{
    std::size_t number = 0;
    for (; *format >= L'0' && *format <= L'9'; ++format)
        if (number <= kGreatestWidth)
            number = number * 10 + static_cast<std::size_t>(*format - L'0');
    return number < kGreatestWidth ? number : kGreatestWidth;
}

void ReadFlags(const wchar_t*& format, Conversion& conversion)
{
    for (;; ++format)
    {
        switch (*format)
        {
        case L'-':
            conversion.left = true;
            break;
        case L'+':
            conversion.plus = true;
            break;
        case L' ':
            conversion.blank = true;
            break;
        case L'#':
            conversion.alternate = true;
            break;
        case L'0':
            conversion.zero = true;
            break;
        default:
            return;
        }
    }
}

void ReadWidth(const wchar_t*& format, Conversion& conversion, Arguments& arguments)
{
    if (*format != L'*')
    {
        conversion.width = ReadNumber(format);
        return;
    }
    ++format;
    const long long width = arguments.Next<int>();
    conversion.left = conversion.left || width < 0;
    conversion.width = static_cast<std::size_t>(width < 0 ? -width : width);
}

void ReadPrecision(const wchar_t*& format, Conversion& conversion, Arguments& arguments)
{
    if (*format != L'.')
        return;
    ++format;
    if (*format != L'*')
    {
        conversion.precision = ReadNumber(format);
        return;
    }
    ++format;
    const int precision = arguments.Next<int>();
    if (precision >= 0)
        conversion.precision = static_cast<std::size_t>(precision);
}

bool Skip(const wchar_t*& format, std::wstring_view text)
{
    if (wcsncmp(format, text.data(), text.size()) != 0)
        return false;
    format += text.size();
    return true;
}

} // namespace

ArgumentSize ReadArgumentSize(const wchar_t*& format)
{
    ArgumentSize size = ArgumentSize::Default;
    for (;;)
    {
        if (Skip(format, L"ll") || Skip(format, L"I64") || Skip(format, L"j") || Skip(format, L"z") ||
            Skip(format, L"t"))
            size = ArgumentSize::Bits64;
        else if (Skip(format, L"l") || Skip(format, L"w") || Skip(format, L"I32"))
            size = ArgumentSize::Long;
        else if (Skip(format, L"h"))
            size = ArgumentSize::Short;
        else if (Skip(format, L"T"))
            size = ArgumentSize::Own;
        else if (*format == L'I' && format[1] != 0 && wcschr(L"diouxX", format[1]))
        {
            // `I` alone means pointer size, but only before an integer conversion.
            ++format;
            size = ArgumentSize::Bits64;
        }
        else if (!Skip(format, L"L") && !Skip(format, L"F") && !Skip(format, L"N")) // these have no meaning any more
            return size;
    }
}

Conversion ReadConversion(const wchar_t*& format, Arguments& arguments)
{
    Conversion conversion;
    ReadFlags(format, conversion);
    ReadWidth(format, conversion, arguments);
    ReadPrecision(format, conversion, arguments);
    conversion.size = ReadArgumentSize(format);
    conversion.letter = *format;
    if (*format != 0)
        ++format;
    return conversion;
}

} // namespace qxplatform
