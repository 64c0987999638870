#include "formatter.h"

#include "number_text.h"

#include <cstdint>
#include <cstring>
#include <limits>
#include <string_view>

namespace qxplatform
{

namespace
{

std::int64_t NextSigned(Arguments& arguments, ArgumentSize size)
{
    if (size == ArgumentSize::Bits64)
        return arguments.Next<long long>();
    const int value = arguments.Next<int>();
    return size == ArgumentSize::Short ? static_cast<short>(value) : value;
}

std::uint64_t NextUnsigned(Arguments& arguments, ArgumentSize size)
{
    if (size == ArgumentSize::Bits64)
        return arguments.Next<unsigned long long>();
    const unsigned value = arguments.Next<unsigned>();
    return size == ArgumentSize::Short ? static_cast<unsigned short>(value) : value;
}

// Returns true if a text or character is narrow. It is wide unless the conversion or its size says otherwise; an
// upper-case letter inverts the default.
bool IsNarrow(const Conversion& conversion)
{
    if (conversion.size == ArgumentSize::Short)
        return true;
    const bool otherWidth = conversion.letter == L'S' || conversion.letter == L'C';
    return otherWidth && conversion.size == ArgumentSize::Default;
}

template <class View>
void AppendText(BoundedText& target, const Conversion& conversion, View text)
{
    const std::size_t fill = conversion.width > text.size() ? conversion.width - text.size() : 0;
    if (!conversion.left)
        target.Fill(conversion.zero ? L'0' : L' ', fill);
    target.Append(text);
    if (conversion.left)
        target.Fill(L' ', fill);
}

void AppendString(BoundedText& target, const Conversion& conversion, Arguments& arguments)
{
    // A text with a precision need not be terminated.
    const std::size_t limit = conversion.precision.value_or(std::numeric_limits<int>::max());
    if (IsNarrow(conversion))
    {
        const char* text = arguments.Next<const char*>();
        text = text ? text : "(null)";
        AppendText(target, conversion, std::string_view(text, strnlen(text, limit)));
    }
    else
    {
        const wchar_t* text = arguments.Next<const wchar_t*>();
        text = text ? text : L"(null)";
        AppendText(target, conversion, std::wstring_view(text, wcsnlen(text, limit)));
    }
}

void AppendCharacter(BoundedText& target, const Conversion& conversion, Arguments& arguments)
{
    const int argument = arguments.Next<int>();
    const wchar_t c = IsNarrow(conversion) ? static_cast<unsigned char>(argument) : static_cast<wchar_t>(argument);
    const std::size_t length = conversion.precision && *conversion.precision == 0 ? 0 : 1;
    AppendText(target, conversion, std::wstring_view(&c, length));
}

void AppendConversion(BoundedText& target, const Conversion& conversion, Arguments& arguments)
{
    switch (conversion.letter)
    {
    case L'd':
    case L'i':
        return AppendSigned(target, conversion, NextSigned(arguments, conversion.size));
    case L'o':
    case L'u':
    case L'x':
    case L'X':
        return AppendUnsigned(target, conversion, NextUnsigned(arguments, conversion.size));
    case L'p':
        return AppendPointer(target, conversion, arguments.Next<const void*>());
    case L's':
    case L'S':
        return AppendString(target, conversion, arguments);
    case L'c':
    case L'C':
        return AppendCharacter(target, conversion, arguments);
    case L'a':
    case L'A':
    case L'e':
    case L'E':
    case L'f':
    case L'g':
    case L'G':
        return AppendFloat(target, conversion, arguments.Next<double>());
    case L'n':
        // %n isn't supported, because it would let an untrusted format write to memory. Its argument is skipped.
        arguments.Next<void*>();
        return;
    case 0:
        return;
    default:
        target.Append(conversion.letter);
    }
}

} // namespace

void Format(BoundedText& target, const wchar_t* format, Arguments& arguments)
{
    for (;;)
    {
        const wchar_t* literal = format;
        while (*format != 0 && *format != L'%')
            ++format;
        target.Append(std::wstring_view(literal, static_cast<std::size_t>(format - literal)));
        if (*format == 0)
            return;
        ++format;
        AppendConversion(target, ReadConversion(format, arguments), arguments);
    }
}

} // namespace qxplatform
