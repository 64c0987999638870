#pragma once

#include <cstdarg>
#include <cstddef>

namespace qx
{

// Formats with the runtime library's wide formatter into a buffer of `size` characters. Truncates to size - 1
// characters and always terminates. Returns the number of characters, or a negative number if the text was truncated.
// With size 0, writes nothing and returns a negative number.
int FormatBounded(wchar_t* buffer, std::size_t size, const wchar_t* format, va_list arguments);

} // namespace qx
