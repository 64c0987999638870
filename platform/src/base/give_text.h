// Results of the functions that fill a caller's buffer with text.
#pragma once

#include <winerror.h>

#include <algorithm>

#include "base/fail.h"

namespace qxplatform
{

// Copies the text and a terminator into a buffer of `size` characters. Returns the number of characters copied, or 0
// with ERROR_INSUFFICIENT_BUFFER. For a size of 0, only returns the number of characters needed.
template <class Text>
int GiveText(const Text& text, wchar_t* buffer, int size)
{
    const int needed = static_cast<int>(text.size()) + 1;
    if (size == 0)
        return needed;
    if (size < needed)
        return Fail(ERROR_INSUFFICIENT_BUFFER);
    *std::copy(text.begin(), text.end(), buffer) = 0;
    return needed;
}

} // namespace qxplatform
