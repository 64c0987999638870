// The scans that loading and saving spend their time in.
#pragma once

#include "prof/text_block.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <string_view>

namespace qx
{

// A scan may read this many characters behind the text's terminator.
constexpr std::size_t kScanPadding = kTextBlockLength;

struct scLineEnd
{
    wchar_t* end;
    bool mayBeEncoded; // some character near the line lies in a row of characters that reading may turn back
};

// The characters that reading turns back are in the rows U+23xx, U+24xx and U+30xx.
constexpr bool IsInDecodedRow(wchar_t c)
{
    const unsigned row = static_cast<unsigned>(c) >> 8;
    return row == 0x23 || row == 0x24 || row == 0x30;
}

// The first carriage return, line feed or zero from `text` on. The text ends with a zero.
inline scLineEnd FindLineEnd(wchar_t* text)
{
    TextBlockTruths inRow = {};
    for (;; text += kTextBlockLength)
    {
        const TextBlock characters = LoadTextBlock(text);
        const TextBlock rows = characters >> 8;
        inRow |= (rows == EightOf(0x23)) | (rows == EightOf(0x24)) | (rows == EightOf(0x30));
        if (const unsigned stops =
                MaskOf((characters == EightOf(0)) | (characters == EightOf(u'\r')) | (characters == EightOf(u'\n'))))
            return {text + std::countr_zero(stops) / 2, MaskOf(inRow) != 0};
    }
}

// Whether a character below the blank is in the text.
inline bool HasControlCharacter(std::wstring_view text)
{
    const wchar_t* next = text.data();
    const wchar_t* const end = next + text.size();
    for (; end - next >= std::ptrdiff_t{kTextBlockLength}; next += kTextBlockLength)
        if (MaskOf(LoadTextBlock(next) < EightOf(u' ')) != 0)
            return true;
    return std::any_of(next, end, [](wchar_t c) { return c < L' '; });
}

// Whether a character is in the text that the XML forms mask: one below the blank or of the markup.
inline bool HasMaskedCharacter(std::wstring_view text)
{
    const wchar_t* next = text.data();
    const wchar_t* const end = next + text.size();
    for (; end - next >= std::ptrdiff_t{kTextBlockLength}; next += kTextBlockLength)
    {
        const TextBlock characters = LoadTextBlock(next);
        // '&' and '\'' are neighbours that differ in the lowest bit, and '<' and '>' differ in the second one.
        const TextBlockTruths isMasked = (characters < EightOf(u' ')) | ((characters | EightOf(1)) == EightOf(u'\'')) |
                                         ((characters | EightOf(2)) == EightOf(u'>')) | (characters == EightOf(u'"'));
        if (MaskOf(isMasked) != 0)
            return true;
    }
    return std::any_of(next, end,
        [](wchar_t c) { return c < L' ' || c == L'<' || c == L'>' || c == L'&' || c == L'\'' || c == L'"'; });
}

} // namespace qx
