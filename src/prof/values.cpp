#include "prof/values.h"

#include "core/text/characters.h"

#include <algorithm>
#include <cstdint>

namespace qx
{

void CopyToBuffer(std::wstring_view text, wchar_t* buffer, std::int32_t size)
{
    if (buffer == nullptr || size <= 0)
        return;
    const std::size_t length = std::min(text.size(), static_cast<std::size_t>(size) - 1);
    MoveCharacters(buffer, text.data(), length);
    buffer[length] = 0;
}

} // namespace qx
