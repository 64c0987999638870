// The arguments of a message, by number.
#pragma once

#include <minwindef.h>

#include <algorithm>
#include <array>
#include <cstdarg>

namespace qxplatform
{

class MessageArguments
{
public:
    static constexpr unsigned kMaxStars = 2; // for width and precision, which precede a value

    struct Insert
    {
        std::array<int, kMaxStars> stars;
        DWORD_PTR value;
    };

    // Null if there are no arguments. The list is read only as far as the message refers to it, because only the
    // message determines their number.
    explicit MessageArguments(va_list* list) : _list(list) {}

    bool Any() const { return _list != nullptr; }

    // `number` counts from 1 to 99.
    Insert Read(unsigned number, unsigned stars)
    {
        std::array<DWORD_PTR, kMaxStars + 1> values{};
        for (unsigned i = 0; i <= stars; ++i)
            values[i] = FromList(number, i);
        return {{static_cast<int>(values[0]), static_cast<int>(values[1])}, values[stars]};
    }

private:
    static constexpr unsigned kMaxNumber = 99;

    // Returns an argument of an insert: the first one if `behind` is 0. The second argument gets the insert's number in
    // place of the first, and the third argument gets the next number. As in the documented example, %3 in
    // "%1!*.*s! %3" thus refers to the fourth argument.
    DWORD_PTR FromList(unsigned number, unsigned behind)
    {
        if (behind == 0)
        {
            while (_read < number)
                _values[_read++] = va_arg(*_list, DWORD_PTR);
            return _values[number - 1];
        }
        const unsigned slot = number + behind - 2;
        _read = std::max(_read, slot + 1);
        return _values[slot] = va_arg(*_list, DWORD_PTR);
    }

    va_list* _list;
    std::array<DWORD_PTR, kMaxNumber + kMaxStars> _values{};
    unsigned _read = 0;
};

} // namespace qxplatform
