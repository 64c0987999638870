// Eight characters at a time, in the compiler's own vectors, which it has for every processor.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace qx
{

typedef std::uint16_t TextBlock __attribute__((vector_size(16)));

// The result of a comparison: all bits of each character for which it holds.
typedef std::int16_t TextBlockTruths __attribute__((vector_size(16)));

constexpr std::size_t kTextBlockLength = 8;

inline TextBlock LoadTextBlock(const wchar_t* text)
{
    TextBlock block;
    std::memcpy(&block, text, sizeof(block));
    return block;
}

inline TextBlock EightOf(std::uint16_t c)
{
    return TextBlock{c, c, c, c, c, c, c, c};
}

// Two bits for each character, the first one lowest.
inline unsigned MaskOf(TextBlockTruths truths)
{
#if defined(__SSE2__)
    return static_cast<unsigned>(_mm_movemask_epi8(reinterpret_cast<__m128i>(truths)));
#else
    constexpr TextBlock places = {0x3, 0xC, 0x30, 0xC0, 0x300, 0xC00, 0x3000, 0xC000};
    const TextBlock bits = reinterpret_cast<TextBlock>(truths) & places;
    std::uint64_t halves[2];
    std::memcpy(halves, &bits, sizeof(halves));
    std::uint64_t all = halves[0] | halves[1];
    all |= all >> 32;
    all |= all >> 16;
    return static_cast<unsigned>(all & 0xFFFF);
#endif
}

} // namespace qx
