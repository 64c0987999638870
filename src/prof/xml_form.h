// The XML form of a profile. It is read line by line and not as XML: what the writer makes comes back, with some slack,
// and nothing else; a tag that spans two lines isn't understood.
#pragma once

#include "prof/item.h"
#include "prof/text_form.h"

#include <cstdint>

namespace qx
{

class clsProfOutput;

// A source that begins with this line is in this form.
constexpr wchar_t kXmlFirstLine[] = L"<?xml version=\"1.0\" encoding=\"UTF-16\" standalone=\"yes\"?>";

// Reads lines into the list, as ParseLevel does. A source of this form that turns out to hold form data is handed to
// the rules of that form.
void ParseXmlLines(scParseState& state, int level, clsItemList& list);

// A whole file: the mark, the head, the entries of the root at level 1, and the end.
void WriteXmlFile(clsProfOutput& output, const clsItemList& root);

// The list alone, without mark and head: with a tag of its own unless it is the root of a profile.
void WriteXmlObject(clsProfOutput& output, const clsItemList& root, std::uint32_t level);

} // namespace qx
