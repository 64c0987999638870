// Eight characters at a time, for the functions that walk texts.
#pragma once

#include <emmintrin.h>

#include <cstddef>
#include <cstdint>

namespace qxplatform
{

// Terminated texts are read in whole blocks, which can reach behind the terminator but never into another page. The
// sanitizers would take that for a fault, and are to see each character read on its own.
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

constexpr size_t BlockLength = 8;

// One bit for each byte of a block, so two for each character.
using BlockMask = unsigned;
constexpr BlockMask AllOfBlock = 0xffff;

inline size_t FirstCharacter(BlockMask mask)
{
    return static_cast<size_t>(__builtin_ctz(mask)) / 2;
}

class TextBlock
{
public:
    explicit TextBlock(const wchar_t* text) : _data(_mm_loadu_si128(reinterpret_cast<const __m128i*>(text))) {}

    // The start of the aligned block that holds *text; it lies in one page.
    static const wchar_t* AlignDown(const wchar_t* text)
    {
        return reinterpret_cast<const wchar_t*>(reinterpret_cast<uintptr_t>(text) & ~uintptr_t{15});
    }

    BlockMask Where(wchar_t c) const { return Mask(_mm_cmpeq_epi16(_data, _mm_set1_epi16(static_cast<short>(c)))); }
    BlockMask WhereSame(TextBlock other) const { return Mask(_mm_cmpeq_epi16(_data, other._data)); }

    // With A to Z as a to z.
    TextBlock Folded() const
    {
        const __m128i fromA = _mm_cmpgt_epi16(_data, _mm_set1_epi16(L'A' - 1));
        const __m128i toZ = _mm_cmplt_epi16(_data, _mm_set1_epi16(L'Z' + 1));
        const __m128i shift = _mm_and_si128(_mm_and_si128(fromA, toZ), _mm_set1_epi16(L'a' - L'A'));
        return TextBlock(_mm_add_epi16(_data, shift));
    }

    // Whether eight characters from here on lie in one page, so that they can be read wherever the text ends.
    static bool FitsInPage(const wchar_t* text)
    {
        constexpr uintptr_t pageSize = 4096;
        return (reinterpret_cast<uintptr_t>(text) & (pageSize - 1)) <= pageSize - sizeof(__m128i);
    }

private:
    explicit TextBlock(__m128i data) : _data(data) {}
    static BlockMask Mask(__m128i bytes) { return static_cast<BlockMask>(_mm_movemask_epi8(bytes)); }

    __m128i _data;
};

} // namespace qxplatform
