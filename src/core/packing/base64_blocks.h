// The greater part of a long text in Base64, at the speed of memory: sixteen symbols at a time.
#pragma once

#include <cstddef>

namespace qx
{

// Both take whole groups from the front, as long as there are blocks of them, and give the count of groups: none where
// the processor has no such instructions. The rest is left to the caller.

std::size_t EncodeBase64Blocks(wchar_t* text, const unsigned char* bytes, std::size_t size);

// Stops in front of a block with anything but letters, digits, "+" and "/".
std::size_t DecodeBase64Blocks(unsigned char* bytes, std::size_t maxGroups, const wchar_t* text, std::size_t length);

} // namespace qx
