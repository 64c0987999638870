#pragma once

#include <cstdarg>
#include <cstddef>
#include <optional>

namespace qx
{

// Estimates how many characters a format produces, from the format and its arguments. Returns nothing if a text or
// count argument is a null pointer, or if a text under `l` or `w` isn't readable.
std::optional<std::size_t> EstimateFormat(const wchar_t* format, va_list arguments);

} // namespace qx
