#include "core/packing/base64_blocks.h"

// The version for processors without a vectorised one: processes nothing, so the caller's loops handle all groups.
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
