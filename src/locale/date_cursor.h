// Reads a text that consists of numbers and single characters.
#pragma once

#include <windows.h>

#include <cstddef>
#include <string_view>

namespace qx
{

constexpr bool IsDecimalDigit(wchar_t c)
{
    return c >= L'0' && c <= L'9';
}

class DateCursor
{
public:
    explicit DateCursor(std::wstring_view text) : _rest(text) {}

    bool IsAtEnd() const { return _rest.empty(); }
    std::wstring_view Rest() const { return _rest; }

    // Skips the next character if it is one of `characters`. Returns true if it was skipped.
    bool Skip(std::wstring_view characters)
    {
        if (_rest.empty() || characters.find(_rest.front()) == characters.npos)
            return false;
        _rest.remove_prefix(1);
        return true;
    }

    // Takes characters as long as the test is true. Returns the characters taken.
    template <class Test>
    std::wstring_view TakeWhile(Test test)
    {
        std::size_t length = 0;
        while (length < _rest.size() && test(_rest[length]))
            ++length;
        return Take(length);
    }

    std::wstring_view Take(std::size_t length)
    {
        const std::wstring_view taken = _rest.substr(0, length);
        _rest.remove_prefix(taken.size());
        return taken;
    }

    // Reads a number of exactly `digits` digits. If there are fewer, returns false and takes nothing.
    bool Number(std::size_t digits, WORD& number)
    {
        if (_rest.size() < digits)
            return false;
        unsigned value = 0;
        for (std::size_t i = 0; i < digits; ++i)
        {
            if (!IsDecimalDigit(_rest[i]))
                return false;
            value = value * 10 + static_cast<unsigned>(_rest[i] - L'0');
        }
        number = static_cast<WORD>(value);
        _rest.remove_prefix(digits);
        return true;
    }

private:
    std::wstring_view _rest;
};

} // namespace qx
