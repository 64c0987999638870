// Binary data as one line of text: optionally compressed (zlib, RFC 1950), optionally enciphered under the caller's
// pass phrase (`clsBlowfish`), and written in Base64 (RFC 4648).
//
// Compressed data stand behind the prefix "@2@", and their image begins with the original size (4 bytes, little-endian)
// and a tag by which a wrong pass phrase is told. The older form "@1@", without the tag, is read only.
#pragma once

#include "core/string.h"

namespace qx
{

class clsFile;

// All of the source, whatever its position, as packed text; an empty source gives the empty text. Sizes are cut to
// 32 bits. An empty key means no encipherment.
String PackToString(clsFile& source, bool compress, const String& key);

// Writes the data of a packed text to the target from 0 on, cuts it there and rewinds it. False, with the target
// untouched, for an empty text. A wrong key gives meaningless bytes and damaged compressed data give none; both are
// true, since the text cannot tell them from data.
bool UnpackFromString(clsFile& target, const String& text, const String& key);

} // namespace qx
