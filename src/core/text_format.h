#pragma once

#include <cstdarg>
#include <cstddef>
#include <optional>

namespace qx
{

// The system's wide formatter into a buffer of `size` characters: cuts to size - 1 and always terminates. The result is
// the number of characters, negative if the text was cut. Size 0 writes nothing and gives a negative number.
int FormatBounded(wchar_t* buffer, std::size_t size, const wchar_t* format, va_list arguments);

// How many characters a format will take, estimated by a walk of the format and its arguments. Nothing if an argument
// is a null pointer where a text or a count is to be, or under `l` or `w` not readable.
std::optional<std::size_t> EstimateFormat(const wchar_t* format, va_list arguments);

} // namespace qx
