// Variants as bytes in a file or stream.
//
// Little-endian. A value consists of a 2-byte type code and the bytes of its type. Text is UTF-16 with a terminator. An
// array is a VT_I4 with the number of elements, followed by the elements, each with its own type. There are no lengths
// and no padding. Types without a representation in this format (file dates, decimals, objects, ...) are written as
// their type code only, or with the first bytes of their value.
#pragma once

#include "core/variant/variant.h"

namespace qx
{

class clsFile;

// Writes the value at the current position. Returns true if all of it was written. An array nested more than 64 levels
// deep is written as an empty value, and the result is false.
bool Save(const clsVariant& value, clsFile& file);

// Reads a value at the current position and moves past it. At the end of the source, `value` is unchanged. Unknown
// types and truncated values become empty. Of a truncated array, the elements present in the source are returned.
// Arrays nested more than 64 levels deep become empty.
void Load(clsVariant& value, clsFile& file);

} // namespace qx
