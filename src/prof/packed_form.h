// The packed form of a profile: four letters, then the file image of one of the other forms as raw deflate data (RFC
// 1951). It has neither a length nor a check sum.
#pragma once

namespace qx
{

class clsFile;
class clsProfOutput;

constexpr char kPackedMagic[4] = {'Z', 'x', 'v', 'Q'};

// Writes the packed form of an image behind what `packed` holds.
void PackImage(const clsProfOutput& image, clsProfOutput& packed);

// Unpacks what follows the magic, where the source stands, into the target, as far as it goes: data that are damaged or
// end early give what comes out before that. False if that is more than `largest` bytes, or than the target takes: no
// more than those are unpacked.
bool UnpackImage(clsFile& source, clsFile& target, long long largest);

} // namespace qx
