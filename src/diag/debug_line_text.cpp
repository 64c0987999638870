#include "diag/debug_line_text.h"

#include "core/text/text_format.h"

#include <wchar.h>

namespace qx
{

void DebugLineText::Append(const wchar_t* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    AppendV(format, arguments);
    va_end(arguments);
}

void DebugLineText::AppendV(const wchar_t* format, va_list arguments)
{
    const std::size_t room = kCapacity - _length;
    const int count = FormatBounded(_text + _length, room + 1, format, arguments);
    // Negative if the text was truncated or an argument couldn't be converted; the converted part is kept then.
    _length += count < 0 ? wcsnlen(_text + _length, room) : static_cast<std::size_t>(count);
}

} // namespace qx
