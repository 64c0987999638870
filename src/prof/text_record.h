// A text of the tree, stored once and shared by pointer.
#pragma once

#include "prof/arena.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>
#include <string_view>

namespace qx
{

// The header of a text. The characters and a terminator follow it in the same arena block. Immutable.
struct scProfText
{
    static constexpr unsigned kHashBits = 30;

    std::uint32_t length;
    std::uint32_t hash : kHashBits;
    std::uint32_t isShared : 1; // stored in one of the job's tables, which owns it
    std::uint32_t isPlain : 1;  // as the name of a leaf it needs no encoding

    const wchar_t* Text() const { return reinterpret_cast<const wchar_t*>(this + 1); }
    std::wstring_view View() const { return {Text(), length}; }

    // Returns the record that contains the characters.
    static const scProfText* Of(const wchar_t* text) { return reinterpret_cast<const scProfText*>(text) - 1; }

    static std::size_t Bytes(std::size_t length) { return sizeof(scProfText) + (length + 1) * sizeof(wchar_t); }
};

static_assert(sizeof(scProfText) == 8 && alignof(scProfText) >= alignof(wchar_t));

// Returns the part of a hash that is stored with its text. The intern tables select their bucket by the lowest bits.
constexpr std::uint32_t KeptHash(std::uint64_t hash)
{
    return static_cast<std::uint32_t>(hash >> 34);
}

inline bool IsSameText(std::wstring_view a, std::wstring_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end());
}

// Creates a record in memory of scProfText::Bytes(text.size()) bytes.
scProfText* MakeProfText(void* memory, std::wstring_view text, std::uint64_t hash, bool isShared);

inline scProfText* NewProfText(clsProfArena& arena, std::wstring_view text, std::uint64_t hash, bool isShared)
{
    return MakeProfText(arena.Allocate(scProfText::Bytes(text.size())), text, hash, isShared);
}

inline void ReleaseProfText(clsProfArena& arena, const scProfText* text) noexcept
{
    if (!text->isShared)
    {
        arena.Release(const_cast<scProfText*>(text), scProfText::Bytes(text->length));
    }
}

} // namespace qx
