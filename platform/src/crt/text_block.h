// Processes eight characters at a time, for functions that scan texts.
#pragma once

#include <emmintrin.h>

#include <cstddef>
#include <cstdint>

namespace qxplatform
{

// Terminated texts are read in whole blocks, which may extend past the terminator but never into another page. The
// sanitizers would report this, and should check each character individually.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool ReadsWholeBlocks = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
constexpr bool ReadsWholeBlocks = false;
#else
constexpr bool ReadsWholeBlocks = true;
#endif
#else
constexpr bool ReadsWholeBlocks = true;
#endif

constexpr std::size_t BlockLength = 8;

// The characters of a block that satisfy a condition.
class BlockLanes
{
public:
    explicit BlockLanes(__m128i lanes) : _lanes(lanes) {}

    BlockLanes operator|(BlockLanes other) const { return BlockLanes(_mm_or_si128(_lanes, other._lanes)); }
    BlockLanes Without(BlockLanes other) const { return BlockLanes(_mm_andnot_si128(other._lanes, _lanes)); }

    // Two bits for each character, the first one lowest.
    unsigned Mask() const { return static_cast<unsigned>(_mm_movemask_epi8(_lanes)); }

    static constexpr unsigned All = 0xffff;
    static std::size_t First(unsigned mask) { return static_cast<std::size_t>(__builtin_ctz(mask)) / 2; }

private:
    __m128i _lanes;
};

class TextBlock
{
public:
    explicit TextBlock(const wchar_t* text) : _data(_mm_loadu_si128(reinterpret_cast<const __m128i*>(text))) {}

    BlockLanes Where(wchar_t c) const
    {
        return BlockLanes(_mm_cmpeq_epi16(_data, _mm_set1_epi16(static_cast<short>(c))));
    }
    BlockLanes WhereSame(TextBlock other) const { return BlockLanes(_mm_cmpeq_epi16(_data, other._data)); }

    // The block with A to Z converted to a to z.
    TextBlock Folded() const
    {
        const __m128i fromA = _mm_cmpgt_epi16(_data, _mm_set1_epi16(L'A' - 1));
        const __m128i toZ = _mm_cmplt_epi16(_data, _mm_set1_epi16(L'Z' + 1));
        const __m128i shift = _mm_and_si128(_mm_and_si128(fromA, toZ), _mm_set1_epi16(L'a' - L'A'));
        return TextBlock(_mm_add_epi16(_data, shift));
    }

private:
    explicit TextBlock(__m128i data) : _data(data) {}

    __m128i _data;
};

// Returns the start of the aligned block that contains *text. It is in the same page.
inline const wchar_t* BlockStart(const wchar_t* text)
{
    return reinterpret_cast<const wchar_t*>(
        reinterpret_cast<std::uintptr_t>(text) & ~std::uintptr_t{sizeof(TextBlock) - 1});
}

// Four aligned blocks are also in one page if the first of them starts here.
constexpr std::size_t LineLength = 4 * BlockLength;
inline bool IsLineStart(const wchar_t* text)
{
    return (reinterpret_cast<std::uintptr_t>(text) & (4 * sizeof(TextBlock) - 1)) == 0;
}

// Returns true if the next eight characters are in one page, so that they can be read wherever the text ends.
inline bool FitsInPage(const wchar_t* text)
{
    constexpr std::uintptr_t kPageSize = 4096;
    return (reinterpret_cast<std::uintptr_t>(text) & (kPageSize - 1)) <= kPageSize - sizeof(TextBlock);
}

} // namespace qxplatform
