// Parses header fields that contain mail addresses (RFC 822), such as From and To.
#pragma once

#include "containers/dlist.h"
#include "core/text/text_buffer.h"

#include <cstddef>
#include <string_view>

namespace qx
{

enum class ParseItemKind
{
    Word = 1,    // or a quoted string, with its quotes
    Comment = 3, // with its parentheses
    Address = 4,
    Blank = 5 // exactly one
};

// A piece of a header field.
struct clsParseItem
{
    ParseItemKind kind;
    std::size_t position; // in the field
    TextBuffer text;      // decoded
};

// Splits a field into pieces, whose texts in order form the decoded field. A control character ends the field and drops
// all pieces before it.
WCValDList<clsParseItem> ParseAddressField(std::wstring_view field);

// Returns true if the whole text is an address: name@domain.domain...
bool IsMailAddress(std::wstring_view text);

// Decodes the international labels ("xn--...") of the domain in an address. An invalid label, or a text without "@", is
// unchanged.
TextBuffer DecodeMailDomain(std::wstring_view address);

} // namespace qx
