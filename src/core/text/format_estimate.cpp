#include "core/text/format_estimate.h"

#include <windows.h>

#include <wchar.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>

namespace qx
{

namespace
{

// The upper limit for a width or the precision of a number. Padding beyond it is truncated.
constexpr int kMostPadding = 1 << 20;

int Bounded(int value)
{
    return std::clamp(value, 0, kMostPadding);
}

// A copy of an argument list that reads one argument after the other.
class ArgumentWalk
{
public:
    explicit ArgumentWalk(va_list arguments) { va_copy(_list, arguments); }
    ArgumentWalk(const ArgumentWalk&) = delete;
    ArgumentWalk& operator=(const ArgumentWalk&) = delete;
    ~ArgumentWalk() { va_end(_list); }

    template <class T>
    T Next()
    {
        return va_arg(_list, T);
    }

private:
    va_list _list;
};

enum class Size
{
    None,
    Narrow,   // h
    Wide,     // l, w
    Integer64 // I64
};

struct Conversion
{
    int width = 0;
    int precision = -1; // none specified
    Size size = Size::None;
    wchar_t type = 0;
};

class Estimate
{
public:
    Estimate(const wchar_t* format, va_list arguments) : _format(format), _arguments(arguments) {}

    bool Walk()
    {
        while (wchar_t c = *_format++)
        {
            if (c == L'%' && *_format == L'%')
                ++_format;
            else if (c == L'%')
            {
                if (!Add(ReadConversion()))
                    return false;
                continue;
            }
            _total += 2;
        }
        return true;
    }

    std::size_t Total() const { return _total; }

private:
    int ReadNumber()
    {
        int number = 0;
        for (; *_format >= L'0' && *_format <= L'9'; ++_format)
            number = number > INT_MAX / 10 - 1 ? number : number * 10 + (*_format - L'0');
        return number;
    }

    int ReadNumberOrArgument()
    {
        if (*_format != L'*')
            return ReadNumber();
        ++_format;
        return _arguments.Next<int>();
    }

    Size ReadSize()
    {
        switch (*_format)
        {
        case L'F':
        case L'L':
        case L'N':
        case L'z':
            ++_format;
            return Size::None;
        case L'I':
            if (_format[1] != L'6' || _format[2] != L'4')
                return Size::None;
            _format += 3;
            return Size::Integer64;
        case L'h':
            ++_format;
            return Size::Narrow;
        case L'l':
        case L'w':
            ++_format;
            return Size::Wide;
        default:
            return Size::None;
        }
    }

    Conversion ReadConversion()
    {
        for (; *_format && wcschr(L"#-+0 ", *_format); ++_format)
        {
            if (*_format == L'#')
                _total += 2;
        }
        Conversion conversion;
        conversion.width = ReadNumberOrArgument();
        if (*_format == L'.')
        {
            ++_format;
            conversion.precision = ReadNumberOrArgument();
        }
        conversion.size = ReadSize();
        conversion.type = *_format;
        if (*_format)
            ++_format;
        return conversion;
    }

    bool Add(const Conversion& conversion)
    {
        const int width = Bounded(conversion.width);
        switch (conversion.type)
        {
        case L's':
        case L'S':
            return AddText(conversion);
        case L'c':
        case L'C':
            _arguments.Next<int>();
            AddItem(conversion.size == Size::Wide ? 2 : 1, conversion);
            return true;
        case L'd':
        case L'i':
        case L'o':
        case L'u':
        case L'x':
        case L'X':
            if (conversion.size == Size::Integer64)
                _arguments.Next<long long>();
            else
                _arguments.Next<int>();
            AddLength(std::max(width, 34));
            return true;
        case L'e':
        case L'E':
        case L'f':
        case L'F':
        case L'g':
        case L'G':
            _arguments.Next<double>();
            AddLength(std::max(width + 2 + Bounded(conversion.precision), 128) + 10);
            return true;
        case L'p':
            _arguments.Next<void*>();
            AddLength(std::max(width, 18));
            return true;
        case L'n':
            return _arguments.Next<void*>() != nullptr;
        default:
            // The conversion takes no argument here. If the formatter does take one (%Ts, %Id), all further arguments
            // are misaligned.
            _outOfStep = true;
            return true;
        }
    }

    // Adds the length of a text. A plain %S is measured as 8-bit text, as the formatter reads it. Measuring it as wide
    // text could read past its end.
    bool AddText(const Conversion& conversion)
    {
        const void* text = _arguments.Next<const void*>();
        if (!text)
            return false;
        // With a precision, the text needs no terminator.
        const std::size_t most = static_cast<std::size_t>(conversion.precision >= 0 ? conversion.precision : INT_MAX);
        const bool wide = conversion.size == Size::Wide;
        std::size_t length = 0;
        if (_outOfStep)
        {
            // The argument may be anything, so it is measured only if it is readable.
            if (IsReadable(text, most))
                length = wcsnlen(static_cast<const wchar_t*>(text), most);
        }
        else if (wide && !IsReadable(text, most))
            return false;
        else if (conversion.size == Size::Narrow || (conversion.type == L'S' && !wide))
            length = strnlen(static_cast<const char*>(text), most);
        else
            length = wcsnlen(static_cast<const wchar_t*>(text), most);
        AddItem(std::max<std::size_t>(length, wide ? 2 : 1), conversion);
        return true;
    }

    static bool IsReadable(const void* text, std::size_t most)
    {
        return reinterpret_cast<std::uintptr_t>(text) % alignof(wchar_t) == 0 &&
               !IsBadStringPtrW(static_cast<const wchar_t*>(text), most);
    }

    void AddItem(std::size_t length, const Conversion& conversion)
    {
        length = std::max(length, static_cast<std::size_t>(Bounded(conversion.width)));
        if (conversion.precision >= 0)
            length = std::min(length, static_cast<std::size_t>(conversion.precision));
        _total += length;
    }

    void AddLength(int length) { _total += static_cast<std::size_t>(length); }

    const wchar_t* _format;
    ArgumentWalk _arguments;
    std::size_t _total = 0;
    bool _outOfStep = false;
};

} // namespace

std::optional<std::size_t> EstimateFormat(const wchar_t* format, va_list arguments)
{
    Estimate estimate(format, arguments);
    if (!estimate.Walk())
        return std::nullopt;
    return estimate.Total();
}

} // namespace qx
