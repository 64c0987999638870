// Maps the charset names of documents to Windows code pages.
#pragma once

#include <cstdint>

namespace qx
{

class IString;

// Returns the code page for a charset name. The name must match completely; case doesn't matter. Returns GetACP() for
// an unknown or empty name.
std::uint32_t CharsetNameToCodePage(const IString& name);

} // namespace qx
