// The scans that loading and saving spend their time in.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

#if defined(__SSE2__)
#include <emmintrin.h>

#include <bit>
#endif

namespace qx
{

// A scan may read this many characters behind the text's terminator.
constexpr std::size_t kScanPadding = 8;

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
#if defined(__SSE2__)
    const __m128i carriageReturn = _mm_set1_epi16(L'\r');
    const __m128i lineFeed = _mm_set1_epi16(L'\n');
    const __m128i zero = _mm_setzero_si128();
    __m128i inRow = zero;
    for (;; text += 8)
    {
        const __m128i characters = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text));
        const __m128i rows = _mm_srli_epi16(characters, 8);
        inRow = _mm_or_si128(inRow, _mm_cmpeq_epi16(rows, _mm_set1_epi16(0x23)));
        inRow = _mm_or_si128(inRow, _mm_cmpeq_epi16(rows, _mm_set1_epi16(0x24)));
        inRow = _mm_or_si128(inRow, _mm_cmpeq_epi16(rows, _mm_set1_epi16(0x30)));
        const __m128i stops = _mm_or_si128(_mm_cmpeq_epi16(characters, zero),
            _mm_or_si128(_mm_cmpeq_epi16(characters, carriageReturn), _mm_cmpeq_epi16(characters, lineFeed)));
        if (const auto mask = static_cast<unsigned>(_mm_movemask_epi8(stops)))
            return {text + std::countr_zero(mask) / 2, _mm_movemask_epi8(inRow) != 0};
    }
#else
    bool mayBeEncoded = false;
    for (; *text != 0 && *text != L'\r' && *text != L'\n'; ++text)
        mayBeEncoded |= IsInDecodedRow(*text);
    return {text, mayBeEncoded};
#endif
}

// Whether a character below the blank is in the text.
inline bool HasControlCharacter(std::wstring_view text)
{
    const wchar_t* next = text.data();
    const wchar_t* const end = next + text.size();
#if defined(__SSE2__)
    const __m128i largestControl = _mm_set1_epi16(0x1F);
    const __m128i zero = _mm_setzero_si128();
    for (; end - next >= 8; next += 8)
    {
        const __m128i characters = _mm_loadu_si128(reinterpret_cast<const __m128i*>(next));
        // The difference with saturation is 0 for what isn't larger.
        const __m128i controls = _mm_cmpeq_epi16(_mm_subs_epu16(characters, largestControl), zero);
        if (_mm_movemask_epi8(controls) != 0)
            return true;
    }
#endif
    return std::any_of(next, end, [](wchar_t c) { return c < L' '; });
}

// Whether a character is in the text that the XML forms mask: one below the blank or of the markup.
inline bool HasMaskedCharacter(std::wstring_view text)
{
    const wchar_t* next = text.data();
    const wchar_t* const end = next + text.size();
#if defined(__SSE2__)
    const __m128i largestControl = _mm_set1_epi16(0x1F);
    const __m128i zero = _mm_setzero_si128();
    // '&' and '\'' are neighbours that differ in the lowest bit, and '<' and '>' differ in the second one.
    for (; end - next >= 8; next += 8)
    {
        const __m128i characters = _mm_loadu_si128(reinterpret_cast<const __m128i*>(next));
        __m128i found = _mm_cmpeq_epi16(_mm_subs_epu16(characters, largestControl), zero);
        found =
            _mm_or_si128(found, _mm_cmpeq_epi16(_mm_or_si128(characters, _mm_set1_epi16(1)), _mm_set1_epi16(L'\'')));
        found = _mm_or_si128(found, _mm_cmpeq_epi16(_mm_or_si128(characters, _mm_set1_epi16(2)), _mm_set1_epi16(L'>')));
        found = _mm_or_si128(found, _mm_cmpeq_epi16(characters, _mm_set1_epi16(L'"')));
        if (_mm_movemask_epi8(found) != 0)
            return true;
    }
#endif
    return std::any_of(next, end,
        [](wchar_t c) { return c < L' ' || c == L'<' || c == L'>' || c == L'&' || c == L'\'' || c == L'"'; });
}

} // namespace qx
