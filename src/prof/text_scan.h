// The inner loops of loading and saving.
#pragma once

#include "prof/text_block.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <string_view>

namespace qx
{

// A scan may read up to this many characters beyond the terminator.
constexpr std::size_t kScanPadding = kTextBlockLength;

struct scLineEnd
{
    wchar_t* end;
    bool mayBeEncoded; // a character nearby is in a decoded row, see below
};

// The replacement characters that loading decodes are in the rows U+23xx, U+24xx and U+30xx.
constexpr bool IsInDecodedRow(wchar_t c)
{
    const unsigned row = static_cast<unsigned>(c) >> 8;
    return row == 0x23 || row == 0x24 || row == 0x30;
}

// Returns the first carriage return, line feed or zero. The text must be zero-terminated.
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

// Returns true if the text contains a control character (below U+0020).
inline bool HasControlCharacter(std::wstring_view text)
{
    const wchar_t* next = text.data();
    const wchar_t* const end = next + text.size();
    for (; end - next >= std::ptrdiff_t{kTextBlockLength}; next += kTextBlockLength)
        if (MaskOf(LoadTextBlock(next) < EightOf(u' ')) != 0)
            return true;
    return std::any_of(next, end, [](wchar_t c) { return c < L' '; });
}

// Returns true if the text contains a character that the XML forms mask: a control or markup character.
inline bool HasMaskedCharacter(std::wstring_view text)
{
    const wchar_t* next = text.data();
    const wchar_t* const end = next + text.size();
    for (; end - next >= std::ptrdiff_t{kTextBlockLength}; next += kTextBlockLength)
    {
        const TextBlock characters = LoadTextBlock(next);
        // '&' and '\'' differ only in bit 0, '<' and '>' only in bit 1.
        const TextBlockTruths isMasked = (characters < EightOf(u' ')) | ((characters | EightOf(1)) == EightOf(u'\'')) |
                                         ((characters | EightOf(2)) == EightOf(u'>')) | (characters == EightOf(u'"'));
        if (MaskOf(isMasked) != 0)
            return true;
    }
    return std::any_of(next, end,
        [](wchar_t c) { return c < L' ' || c == L'<' || c == L'>' || c == L'&' || c == L'\'' || c == L'"'; });
}

} // namespace qx
