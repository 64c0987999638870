// The XML form of a profile. It is read line by line, not by an XML parser. The reader understands what the writer
// produces, with some tolerance, and nothing else. A tag must not span lines.
#pragma once

#include "prof/item.h"
#include "prof/text_form.h"

#include <cstdint>

namespace qx
{

class clsProfOutput;

// A source that begins with this line is in XML form.
constexpr wchar_t kXmlFirstLine[] = L"<?xml version=\"1.0\" encoding=\"UTF-16\" standalone=\"yes\"?>";

// Reads lines into the list, like ParseLevel. If the source turns out to be XFDF, it continues with the XFDF parser.
void ParseXmlLines(scParseState& state, int level, clsItemList& list);

// Writes a complete file: the byte order mark, the head, the entries of the root at level 1, and the end.
void WriteXmlFile(clsProfOutput& output, const clsItemList& root);

// Writes only the list, without byte order mark and head. It has a tag of its own unless it is the root of a profile.
void WriteXmlObject(clsProfOutput& output, const clsItemList& root, std::uint32_t level);

} // namespace qx
