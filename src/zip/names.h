// Names and comments of members: the form in which they are stored, and their two encodings.
#pragma once

#include "core/text/string.h"

#include <string>

namespace qx
{

constexpr unsigned kZipOemCodePage = 437;
constexpr unsigned kZipUtf8CodePage = 65001;

// The name under which a file is stored: that which was given, or else its path. The drive or the server goes, the
// separator behind it stays; slashes separate.
String StoredNameOf(const String& path, const String& given);

// Whether code page 437 has all characters of the text.
bool IsOemText(const String& text);

// The text in a code page; for page 437 what isn't in it becomes the default character.
std::string EncodedText(const String& text, unsigned codePage);

} // namespace qx
