// One line of the debug output while it is made.
#pragma once

#include <cstdarg>
#include <cstddef>

namespace qx
{

// On the stack of whoever writes the line, so that a line needs no memory. What doesn't fit is cut off.
class DebugLineText
{
public:
    static constexpr std::size_t kCapacity = 1024;

    void Append(const wchar_t* format, ...);
    void AppendV(const wchar_t* format, va_list arguments);

    const wchar_t* Text() const { return _text; }
    std::size_t Length() const { return _length; }

private:
    wchar_t _text[kCapacity + 1] = {}; // all of it zero, since a formatter that gives up leaves no terminator
    std::size_t _length = 0;
};

} // namespace qx
