// Texts of a given length.
#pragma once

#include "core/text/string.h"

namespace qxtest
{

inline qx::String Filled(wchar_t c, std::size_t count)
{
    qx::String text;
    text.Fill(c, count);
    return text;
}

} // namespace qxtest
