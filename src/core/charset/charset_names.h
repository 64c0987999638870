// Charset names of documents as Windows code pages.
#pragma once

#include <cstdint>

namespace qx
{

class IString;

// The code page of a charset name, compared whole and without regard to case; GetACP() for any name that isn't in the
// table, the empty one included.
std::uint32_t CharsetNameToCodePage(const IString& name);

} // namespace qx
