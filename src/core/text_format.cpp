#include "core/text_format.h"

#include <wchar.h>

namespace qx
{

int FormatBounded(wchar_t* buffer, std::size_t size, const wchar_t* format, va_list arguments)
{
    if (size == 0)
        return -1;
    buffer[0] = 0;
    const int count = _vsnwprintf(buffer, size - 1, format, arguments);
    buffer[size - 1] = 0;
    return count;
}

} // namespace qx
