// Processes eight characters at a time, for functions that scan texts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace qxplatform
{

// Terminated texts are read in whole blocks, which may extend past the terminator but never into another page. The
// sanitizers would report this, and should check each character individually.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kReadsWholeBlocks = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
constexpr bool kReadsWholeBlocks = false;
#else
constexpr bool kReadsWholeBlocks = true;
#endif
#else
constexpr bool kReadsWholeBlocks = true;
#endif

constexpr std::size_t kBlockLength = 8;

// The compiler's own vectors, which exist for every processor. A comparison sets all bits of each element that
// satisfies it.
typedef std::uint16_t BlockUnits __attribute__((vector_size(16)));
typedef std::int16_t BlockTruths __attribute__((vector_size(16)));

inline BlockUnits EightOf(wchar_t c)
{
    const auto unit = static_cast<std::uint16_t>(c);
    return BlockUnits{unit, unit, unit, unit, unit, unit, unit, unit};
}

// Returns two bits per character, the first character lowest.
inline unsigned MaskOf(BlockTruths lanes)
{
#if defined(__SSE2__)
    return static_cast<unsigned>(_mm_movemask_epi8(reinterpret_cast<__m128i>(lanes)));
#else
    constexpr BlockUnits kPlaces = {0x3, 0xc, 0x30, 0xc0, 0x300, 0xc00, 0x3000, 0xc000};
    const BlockUnits bits = reinterpret_cast<BlockUnits>(lanes) & kPlaces;
    std::uint64_t halves[2];
    std::memcpy(halves, &bits, sizeof halves);
    std::uint64_t all = halves[0] | halves[1];
    all |= all >> 32;
    all |= all >> 16;
    return static_cast<unsigned>(all & 0xffff);
#endif
}

// The characters of a block that satisfy a condition.
class BlockLanes
{
public:
    explicit BlockLanes(BlockTruths lanes) : _lanes(lanes) {}

    BlockLanes operator|(BlockLanes other) const { return BlockLanes(_lanes | other._lanes); }
    BlockLanes Without(BlockLanes other) const { return BlockLanes(_lanes & ~other._lanes); }

    unsigned Mask() const { return MaskOf(_lanes); }

    static constexpr unsigned kAll = 0xffff;
    static std::size_t First(unsigned mask) { return static_cast<std::size_t>(__builtin_ctz(mask)) / 2; }

private:
    BlockTruths _lanes;
};

class TextBlock
{
public:
    explicit TextBlock(const wchar_t* text) { std::memcpy(&_data, text, sizeof _data); }

    BlockLanes Where(wchar_t c) const { return BlockLanes(_data == EightOf(c)); }
    BlockLanes WhereSame(TextBlock other) const { return BlockLanes(_data == other._data); }

    // Returns the block with A to Z converted to a to z.
    TextBlock Folded() const
    {
        // Signed numbers are compared in one step. Characters from U+8000 on are negative, so they are no capitals.
        const auto numbers = reinterpret_cast<BlockTruths>(_data);
        const BlockTruths isCapital = (numbers > reinterpret_cast<BlockTruths>(EightOf(L'A' - 1))) &
                                      (numbers < reinterpret_cast<BlockTruths>(EightOf(L'Z' + 1)));
        return TextBlock(_data + (reinterpret_cast<BlockUnits>(isCapital) & EightOf(L'a' - L'A')));
    }

private:
    explicit TextBlock(BlockUnits data) : _data(data) {}

    BlockUnits _data;
};

// Returns the start of the aligned block that contains *text. It is in the same page.
inline const wchar_t* BlockStart(const wchar_t* text)
{
    return reinterpret_cast<const wchar_t*>(
        reinterpret_cast<std::uintptr_t>(text) & ~std::uintptr_t{sizeof(TextBlock) - 1});
}

// Four consecutive blocks are in one page if the first one is aligned to their total length.
constexpr std::size_t kLineLength = 4 * kBlockLength;
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
