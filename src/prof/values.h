// Which values are interned, and how values are copied to callers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace qx
{

// Returns false for values that look like coordinates or numbers, because these rarely repeat: those that begin with
// '(', with a digit, or with a minus sign and a digit. Numbers of up to three digits are interned.
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

// Copies at most `size` - 1 characters and a terminator to `buffer`. Writes nothing if the buffer is null or `size` is
// 0 or negative.
void CopyToBuffer(std::wstring_view text, wchar_t* buffer, std::int32_t size);

} // namespace qx
