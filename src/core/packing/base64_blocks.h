// Encodes and decodes the bulk of a long Base64 text at the speed of memory, sixteen symbols at a time.
#pragma once

#include <cstddef>

namespace qx
{

// Both process blocks of several groups (a group is 3 bytes, or 4 characters) from the front while enough input
// remains. They return the number of groups processed, 0 if the processor lacks the instructions. The caller handles
// the rest.

std::size_t EncodeBase64Blocks(wchar_t* text, const unsigned char* bytes, std::size_t size);

// Stops before the first block that contains a character other than letters, digits, "+" and "/".
std::size_t DecodeBase64Blocks(unsigned char* bytes, std::size_t maxGroups, const wchar_t* text, std::size_t length);

} // namespace qx
