#pragma once

#include <cstdarg>
#include <cstddef>

namespace qx
{

// The runtime library's wide formatter into a buffer of `size` characters: cuts to size - 1 and always terminates. The
// result is the number of characters, negative if the text was cut. Size 0 writes nothing and gives a negative number.
int FormatBounded(wchar_t* buffer, std::size_t size, const wchar_t* format, va_list arguments);

} // namespace qx
