// The packed form of a profile: a magic number of four letters, followed by the file image of another form as raw
// deflate data (RFC 1951). It contains neither a length nor a checksum.
#pragma once

#include <cstdint>

namespace qx
{

class clsFile;
class clsProfOutput;

constexpr char kPackedMagic[4] = {'Z', 'x', 'v', 'Q'};

// Appends the packed form of an image to `packed`.
void PackImage(const clsProfOutput& image, clsProfOutput& packed);

// Unpacks the data at the current position of `source`, which must follow the magic number. Damaged or truncated data
// are unpacked as far as possible. Returns the ProfSource bits of what was found: kSourceDamaged, kSourceIgnored (bytes
// after the data), or kSourceTooLarge if the result would exceed `largest` bytes or the target can't store it;
// unpacking stops at that point.
std::uint32_t UnpackImage(clsFile& source, clsFile& target, std::int64_t largest);

} // namespace qx
