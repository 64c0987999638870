// Encoded words in mail headers: =?charset?Q?text?= and =?charset?B?text?= (RFC 2047), and with a language after the
// charset (RFC 2231).
#pragma once

#include "core/text/string.h"
#include "core/text/text_buffer.h"

#include <cstddef>
#include <optional>
#include <string_view>

namespace qx
{

struct EncodedWord
{
    std::wstring_view charset;
    wchar_t encoding; // Q or B, in upper case only
    std::wstring_view text;
    std::size_t length; // of the whole word
};

// Recognises the encoded words of one header. The text must outlive the object.
class EncodedWords
{
public:
    explicit EncodedWords(std::wstring_view header) : _header(header) {}

    // Returns the encoded word that begins at a position, if there is one. If the positions of successive calls
    // increase, all calls together take linear time.
    std::optional<EncodedWord> At(std::size_t position);

private:
    std::size_t FindEnd(std::size_t from);

    const std::wstring_view _header;
    // The last result of FindEnd, and where its search began.
    std::size_t _end = 0;
    std::size_t _searchedFrom = 0;
    bool _isSearched = false;
};

// Returns the text of an encoded word. It ends at the first zero byte. An unknown charset means the code page of the
// system.
String DecodeWord(const EncodedWord& word);

// Decodes all encoded words of a header and keeps the text around and between them.
TextBuffer DecodeWords(std::wstring_view header);

} // namespace qx
