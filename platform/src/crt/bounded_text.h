// The output buffer of the formatter. Stores what fits and counts everything.
#pragma once

#include <wchar.h>

#include <cstddef>
#include <string_view>

namespace qxplatform
{

class BoundedText
{
public:
    BoundedText(wchar_t* target, std::size_t capacity) : _target(target), _capacity(capacity) {}

    // The length of the whole text, whether or not it fits.
    std::size_t Length() const { return _length; }
    bool Fits() const { return _length <= _capacity; }

    void Append(wchar_t c)
    {
        if (_length < _capacity)
            _target[_length] = c;
        ++_length;
    }

    void Append(std::wstring_view text)
    {
        wmemcpy(_target + Position(), text.data(), Room(text.size()));
        _length += text.size();
    }

    // Appends each byte as the character with the same value, as in the "C" locale.
    void Append(std::string_view bytes)
    {
        wchar_t* position = _target + Position();
        for (const char byte : bytes.substr(0, Room(bytes.size())))
            *position++ = static_cast<unsigned char>(byte);
        _length += bytes.size();
    }

    void Fill(wchar_t c, std::size_t count)
    {
        wmemset(_target + Position(), c, Room(count));
        _length += count;
    }

private:
    std::size_t Position() const { return Fits() ? _length : _capacity; }
    std::size_t Room(std::size_t wanted) const
    {
        const std::size_t left = _capacity - Position();
        return wanted < left ? wanted : left;
    }

    wchar_t* _target;
    std::size_t _capacity;
    std::size_t _length = 0;
};

} // namespace qxplatform
