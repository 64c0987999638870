// UTF-8 that reached the library as bytes in a String.
#pragma once

namespace qx
{

class String;

// Each unit of `bytes` holds one byte. Where the bytes aren't well-formed, or tell a character above U+FFFF, the result
// is the decoder's message and nothing that was decoded: "invalid UTF-8 sequence found!", "invalid UTF-8 encoding!" or
// "UCS-4 not supported!".
String DecodeUTF8(const String& bytes);

// What the document readers call: decodes if the declared encoding is "UTF-8", and else gives the text as it is.
String DecodeDeclared(const String& text, const String& encoding);

} // namespace qx
