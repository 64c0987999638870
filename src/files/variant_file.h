// Variants as bytes in a file or stream.
//
// Little-endian: the type code in 2 bytes, then the value in as many bytes as its type has; a text in UTF-16 with a
// terminator; an array as a VT_I4 with the number of elements, and each element with its type. No lengths, no padding.
// What has no place in this form (dates of files, decimals, objects, ...) is its type code alone or the first bytes of
// it.
#pragma once

#include "core/variant/variant.h"

namespace qx
{

class clsFile;

// Writes the value at the position. Whether all of it was written: an array that is nested more than 64 deep isn't, but
// is empty in the file.
bool Save(const clsVariant& value, clsFile& file);

// Reads a value at the position, which is behind it then. At the end of the source the value stays as it is; a type
// that isn't known, and a value that is cut off, make it empty. Of an array comes what the source holds: an element
// that the source has no byte of isn't there, and what is nested more than 64 arrays deep is empty.
void Load(clsVariant& value, clsFile& file);

} // namespace qx
