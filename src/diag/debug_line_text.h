// A line of the debug output while it is composed.
#pragma once

#include <cstdarg>
#include <cstddef>

namespace qx
{

// Lives on the stack of the caller, so that writing a line needs no memory. Text that doesn't fit is truncated.
class DebugLineText
{
public:
    static constexpr std::size_t kCapacity = 1024;

    void Append(const wchar_t* format, ...);
    void AppendV(const wchar_t* format, va_list arguments);

    const wchar_t* Text() const { return _text; }
    std::size_t Length() const { return _length; }

private:
    wchar_t _text[kCapacity + 1] = {}; // zeroed, because a formatter that fails writes no terminator
    std::size_t _length = 0;
};

} // namespace qx
