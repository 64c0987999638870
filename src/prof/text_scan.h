// The inner loops of loading and saving.
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

// A scan may read up to this many characters beyond the terminator.
constexpr std::size_t kScanPadding = 8;

struct scLineEnd
{
    wchar_t* end;
    bool mayBeEncoded; // a character nearby is in a row with replacement characters
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

// Returns true if the text contains a control character (below U+0020).
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
        // Saturating subtraction yields 0 for characters up to the limit.
        const __m128i controls = _mm_cmpeq_epi16(_mm_subs_epu16(characters, largestControl), zero);
        if (_mm_movemask_epi8(controls) != 0)
            return true;
    }
#endif
    return std::any_of(next, end, [](wchar_t c) { return c < L' '; });
}

// Returns true if the text contains a character that the XML forms mask: a control or markup character.
inline bool HasMaskedCharacter(std::wstring_view text)
{
    const wchar_t* next = text.data();
    const wchar_t* const end = next + text.size();
#if defined(__SSE2__)
    const __m128i largestControl = _mm_set1_epi16(0x1F);
    const __m128i zero = _mm_setzero_si128();
    // '&' and '\'' differ only in bit 0, '<' and '>' only in bit 1.
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
