// Names and comments of archive entries: their stored form and their two encodings.
#pragma once

#include "core/text/string.h"

#include <string>

namespace qx
{

constexpr unsigned kZipOemCodePage = 437;
constexpr unsigned kZipUtf8CodePage = 65001;

// Returns the name under which a file is stored: `given`, or the path if `given` is empty. The drive or server is
// removed, but not the separator after it; separators become slashes.
String StoredNameOf(const String& path, const String& given);

// Returns true if code page 437 contains all characters of the text.
bool IsOemText(const String& text);

// Encodes the text in a code page. Characters missing in code page 437 become the default character.
std::string EncodedText(const String& text, unsigned codePage);

} // namespace qx
