#include "core/packing/base64_blocks.h"

// For processors without a variant of their own: the caller's loops over groups do all of it.
namespace qx
{

std::size_t EncodeBase64Blocks(wchar_t*, const unsigned char*, std::size_t)
{
    return 0;
}

std::size_t DecodeBase64Blocks(unsigned char*, std::size_t, const wchar_t*, std::size_t)
{
    return 0;
}

} // namespace qx
