// The packed form of a profile: a magic number of four letters, followed by the file image of another form as raw
// deflate data (RFC 1951). It contains neither a length nor a checksum.
#pragma once

namespace qx
{

class clsFile;
class clsProfOutput;

constexpr char kPackedMagic[4] = {'Z', 'x', 'v', 'Q'};

// Appends the packed form of an image to `packed`.
void PackImage(const clsProfOutput& image, clsProfOutput& packed);

// Unpacks the data at the current position of `source`, which must follow the magic number. Damaged or truncated data
// are unpacked as far as possible. Returns false if the result would exceed `largest` bytes or the target can't store
// it; unpacking stops at that point.
bool UnpackImage(clsFile& source, clsFile& target, long long largest);

} // namespace qx
