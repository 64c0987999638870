// Decodes UTF-8 that the library received as bytes in a String.
#pragma once

namespace qx
{

class String;

// Decodes UTF-8; each unit of `bytes` holds one byte. If the bytes aren't well-formed or encode a character above
// U+FFFF, the result is just the decoder's message: "invalid UTF-8 sequence found!", "invalid UTF-8 encoding!" or
// "UCS-4 not supported!".
String DecodeUTF8(const String& bytes);

// Decodes the text if the declared encoding is "UTF-8"; otherwise returns it unchanged. Used by the document readers.
String DecodeDeclared(const String& text, const String& encoding);

} // namespace qx
