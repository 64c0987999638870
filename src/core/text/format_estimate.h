#pragma once

#include <cstdarg>
#include <cstddef>
#include <optional>

namespace qx
{

// How many characters a format will take, estimated by a walk of the format and its arguments. Nothing if an argument
// is a null pointer where a text or a count is to be, or under `l` or `w` not readable.
std::optional<std::size_t> EstimateFormat(const wchar_t* format, va_list arguments);

} // namespace qx
