// Which values are stored once, and how a value is handed to a caller.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace qx
{

// Texts that are mostly coordinates and numbers rarely repeat, so they stay out of the value table: those that begin
// with a bracket or a digit, or with a minus and a digit, but for the short ones.
constexpr bool IsInternedValue(std::wstring_view value)
{
    const auto isDigitAt = [&](std::size_t i)
    {
        return i < value.size() && value[i] >= L'0' && value[i] <= L'9';
    };
    if (value.starts_with(L'('))
        return false;
    if (isDigitAt(0))
        return value.size() <= 3;
    if (value.starts_with(L'-') && isDigitAt(1))
        return value.size() <= 4;
    return true;
}

// Copies at most `size` - 1 characters and a terminator to the caller's buffer. Nothing is written to a null buffer or
// one of size 0 or less.
void CopyToBuffer(std::wstring_view text, wchar_t* buffer, std::int32_t size);

} // namespace qx
