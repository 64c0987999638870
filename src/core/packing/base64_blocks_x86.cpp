#include "core/packing/base64_blocks.h"

#include <immintrin.h>

#include <cstring>

// Based on W. Muła and D. Lemire, "Faster Base64 Encoding and Decoding Using AVX2 Instructions" (2018), with blocks of
// half the size.
namespace qx
{
namespace
{

constexpr std::size_t kGroupsOfBlock = 4;
constexpr std::size_t kBytesOfBlock = 12;
constexpr std::size_t kSymbolsOfBlock = 16;

bool CanShuffle()
{
    return __builtin_cpu_supports("ssse3") != 0;
}

__m128i Load(const void* at)
{
    return _mm_loadu_si128(static_cast<const __m128i*>(at));
}

void Store(void* at, __m128i block)
{
    _mm_storeu_si128(static_cast<__m128i*>(at), block);
}

// Splits twelve bytes into sixteen numbers of six bits.
[[gnu::target("ssse3")]] __m128i SplitBits(__m128i bytes)
{
    // Duplicates the three bytes of each group into two pairs, whose bits are then shifted by multiplication.
    const __m128i pairs = _mm_shuffle_epi8(bytes, _mm_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10));
    const __m128i first = _mm_mulhi_epu16(_mm_and_si128(pairs, _mm_set1_epi32(0x0FC0FC00)), _mm_set1_epi32(0x04000040));
    const __m128i second =
        _mm_mullo_epi16(_mm_and_si128(pairs, _mm_set1_epi32(0x003F03F0)), _mm_set1_epi32(0x01000010));
    return _mm_or_si128(first, second);
}

// Converts numbers to symbols by adding an offset, which differs for each of the five kinds of symbols.
[[gnu::target("ssse3")]] __m128i SymbolsOf(__m128i numbers)
{
    // 0 for small letters, 1 to 12 for digits and signs, 13 for capital letters.
    const __m128i isCapital = _mm_cmpgt_epi8(_mm_set1_epi8(26), numbers);
    const __m128i kinds =
        _mm_or_si128(_mm_subs_epu8(numbers, _mm_set1_epi8(51)), _mm_and_si128(isCapital, _mm_set1_epi8(13)));
    constexpr char kDigit = '0' - 52;
    const __m128i distances = _mm_setr_epi8('a' - 26, kDigit, kDigit, kDigit, kDigit, kDigit, kDigit, kDigit, kDigit,
        kDigit, kDigit, '+' - 62, '/' - 63, 'A', 0, 0);
    return _mm_add_epi8(numbers, _mm_shuffle_epi8(distances, kinds));
}

// Converts symbols to numbers. Returns false if there is any other character.
[[gnu::target("ssse3")]] bool NumbersOf(__m128i symbols, __m128i& numbers)
{
    const __m128i low = _mm_and_si128(symbols, _mm_set1_epi8(0x0F));
    const __m128i high = _mm_and_si128(_mm_srli_epi32(symbols, 4), _mm_set1_epi8(0x0F));
    // For each half of a character, the kinds that it excludes. A character whose halves exclude a common kind is not a
    // symbol.
    const __m128i byLow =
        _mm_setr_epi8(0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x13, 0x1A, 0x1B, 0x1B, 0x1B, 0x1A);
    const __m128i byHigh =
        _mm_setr_epi8(0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10);
    const __m128i faults = _mm_and_si128(_mm_shuffle_epi8(byLow, low), _mm_shuffle_epi8(byHigh, high));
    if (_mm_movemask_epi8(_mm_cmpeq_epi8(faults, _mm_setzero_si128())) != 0xFFFF)
        return false;
    const __m128i isSlash = _mm_cmpeq_epi8(symbols, _mm_set1_epi8('/')); // has the same upper half as the plus sign
    const __m128i distances =
        _mm_setr_epi8(0, 63 - '/', 62 - '+', 52 - '0', -'A', -'A', 26 - 'a', 26 - 'a', 0, 0, 0, 0, 0, 0, 0, 0);
    numbers = _mm_add_epi8(symbols, _mm_shuffle_epi8(distances, _mm_add_epi8(high, isSlash)));
    return true;
}

// Joins sixteen numbers into twelve bytes at the front.
[[gnu::target("ssse3")]] __m128i JoinBits(__m128i numbers)
{
    const __m128i pairs = _mm_maddubs_epi16(numbers, _mm_set1_epi32(0x01400140));
    const __m128i groups = _mm_madd_epi16(pairs, _mm_set1_epi32(0x00011000));
    return _mm_shuffle_epi8(groups, _mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1));
}

[[gnu::target("ssse3")]] std::size_t Encode(wchar_t* text, const unsigned char* bytes, std::size_t size)
{
    std::size_t groups = 0;
    // Each step reads sixteen bytes and uses twelve.
    for (; size >= sizeof(__m128i); size -= kBytesOfBlock, bytes += kBytesOfBlock, text += kSymbolsOfBlock)
    {
        const __m128i symbols = SymbolsOf(SplitBits(Load(bytes)));
        Store(text, _mm_unpacklo_epi8(symbols, _mm_setzero_si128()));
        Store(text + kSymbolsOfBlock / 2, _mm_unpackhi_epi8(symbols, _mm_setzero_si128()));
        groups += kGroupsOfBlock;
    }
    return groups;
}

[[gnu::target("ssse3")]] std::size_t Decode(
    unsigned char* bytes, std::size_t maxGroups, const wchar_t* text, std::size_t length)
{
    std::size_t groups = 0;
    for (; maxGroups - groups >= kGroupsOfBlock && length >= kSymbolsOfBlock;
         groups += kGroupsOfBlock, length -= kSymbolsOfBlock, text += kSymbolsOfBlock, bytes += kBytesOfBlock)
    {
        // Characters beyond 8 bits become 0 or 255, which are no symbols.
        __m128i numbers;
        if (!NumbersOf(_mm_packus_epi16(Load(text), Load(text + kSymbolsOfBlock / 2)), numbers))
            break;
        const __m128i joined = JoinBits(numbers);
        std::memcpy(bytes, &joined, kBytesOfBlock);
    }
    return groups;
}

} // namespace

std::size_t EncodeBase64Blocks(wchar_t* text, const unsigned char* bytes, std::size_t size)
{
    return CanShuffle() ? Encode(text, bytes, size) : 0;
}

std::size_t DecodeBase64Blocks(unsigned char* bytes, std::size_t maxGroups, const wchar_t* text, std::size_t length)
{
    return CanShuffle() ? Decode(bytes, maxGroups, text, length) : 0;
}

} // namespace qx
