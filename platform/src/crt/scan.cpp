#include "conversion.h"

#include <wchar.h>
#include <wctype.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>

using namespace qxplatform;

namespace
{

constexpr int kEndOfText = -1;

// The rest of the scanned text.
class Input
{
public:
    explicit Input(std::wstring_view text) : _rest(text), _length(text.size()) {}

    bool AtEnd() const { return _rest.empty(); }
    std::size_t Taken() const { return _length - _rest.size(); }
    wchar_t Next() const { return _rest.empty() ? L'\0' : _rest.front(); }
    void Take() { _rest.remove_prefix(1); }

    bool Accept(wchar_t c)
    {
        if (_rest.empty() || _rest.front() != c)
            return false;
        Take();
        return true;
    }

    void SkipBlanks()
    {
        while (iswspace(Next()))
            Take();
    }

private:
    std::wstring_view _rest;
    std::size_t _length;
};

int HexDigitValue(wchar_t c)
{
    if (c >= L'0' && c <= L'9')
        return c - L'0';
    const wint_t lower = towlower(c);
    return lower >= L'a' && lower <= L'f' ? static_cast<int>(lower - L'a') + 10 : 16;
}

// Scans a number of at most `width` characters, including sign and prefix. Values that are too large lose their upper
// bits, as in the Microsoft scanner. With base 0 the prefix determines the base.
class IntegerScan
{
public:
    IntegerScan(Input& input, std::size_t width) : _input(input), _left(width) {}

    std::optional<std::uint64_t> Read(int base)
    {
        const bool negative = Accept(L'-');
        if (!negative)
            Accept(L'+');
        if (base == 0 || base == 16)
            base = ReadPrefix(base);
        std::uint64_t value = 0;
        while (_left != 0 && HexDigitValue(_input.Next()) < base)
        {
            value = value * static_cast<unsigned>(base) + static_cast<unsigned>(HexDigitValue(_input.Next()));
            Take();
            _found = true;
        }
        if (!_found)
            return std::nullopt;
        return negative ? 0 - value : value;
    }

private:
    int ReadPrefix(int base)
    {
        if (!Accept(L'0'))
            return base == 0 ? 10 : base;
        if (Accept(L'x') || Accept(L'X'))
            return 16;
        _found = true; // the 0 was a digit
        return base == 0 ? 8 : base;
    }

    bool Accept(wchar_t c)
    {
        if (_left == 0 || _input.Next() != c)
            return false;
        Take();
        return true;
    }

    void Take()
    {
        _input.Take();
        --_left;
    }

    Input& _input;
    std::size_t _left;
    bool _found = false;
};

struct Field
{
    bool stored = true;
    std::size_t width = std::numeric_limits<std::size_t>::max();
    ArgumentSize size = ArgumentSize::Default;
    wchar_t letter = 0;
};

Field ReadField(const wchar_t*& format)
{
    Field field;
    if (*format == L'*')
    {
        field.stored = false;
        ++format;
    }
    std::size_t width = 0;
    for (; *format >= L'0' && *format <= L'9'; ++format)
        width = width * 10 + static_cast<std::size_t>(*format - L'0');
    if (width != 0)
        field.width = width;
    field.size = ReadArgumentSize(format);
    field.letter = *format;
    if (*format != 0)
        ++format;
    return field;
}

std::optional<int> BaseOf(wchar_t letter)
{
    switch (letter)
    {
    case L'd':
    case L'u':
        return 10;
    case L'i':
        return 0;
    case L'o':
        return 8;
    case L'x':
    case L'X':
    case L'p':
        return 16;
    default:
        return std::nullopt;
    }
}

void Store(Arguments& arguments, const Field& field, std::uint64_t value)
{
    if (field.size == ArgumentSize::Bits64 || field.letter == L'p')
        *arguments.Next<std::uint64_t*>() = value;
    else if (field.size == ArgumentSize::Short)
        *arguments.Next<std::uint16_t*>() = static_cast<std::uint16_t>(value);
    else
        *arguments.Next<std::uint32_t*>() = static_cast<std::uint32_t>(value);
}

class Scan
{
public:
    Scan(std::wstring_view text, Arguments& arguments) : _input(text), _arguments(arguments) {}

    int Run(const wchar_t* format)
    {
        const bool nothing = _input.AtEnd() && *format != 0;
        while (*format != 0)
            if (!Step(format))
                break;
        return nothing ? kEndOfText : _stored;
    }

private:
    // Matches one element of the format. Returns false if the scan ends.
    bool Step(const wchar_t*& format)
    {
        if (iswspace(*format))
        {
            ++format;
            _input.SkipBlanks();
            return true;
        }
        if (*format != L'%')
            return _input.Accept(*format++);
        ++format;
        return ReadInto(ReadField(format));
    }

    bool ReadInto(const Field& field)
    {
        if (field.letter == L'n')
        {
            if (field.stored)
                Store(_arguments, field, _input.Taken());
            return true;
        }
        _input.SkipBlanks();
        if (field.letter == L'%')
            return _input.Accept(L'%');
        const std::optional<int> base = BaseOf(field.letter);
        if (!base)
            return false;
        const std::optional<std::uint64_t> value = IntegerScan(_input, field.width).Read(*base);
        if (!value)
            return false;
        if (field.stored)
        {
            Store(_arguments, field, *value);
            ++_stored;
        }
        return true;
    }

    Input _input;
    Arguments& _arguments;
    int _stored = 0;
};

} // namespace

int _snwscanf(const wchar_t* text, std::size_t length, const wchar_t* format, ...)
{
    va_list list;
    va_start(list, format);
    Arguments arguments(list);
    va_end(list);
    return Scan({text, wcsnlen(text, length)}, arguments).Run(format);
}
