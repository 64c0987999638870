// The intern table of a job: each distinct text is stored once.
#pragma once

#include "prof/text_record.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace qx
{

// No cache in the sense of expiry: a table only grows, and goes with the job whose arena it lives in.
//
// 256 buckets, chosen by the low 8 bits of String::Hash. A bucket is a set with open addressing under the whole hash,
// which finds a text with one or two memory accesses however many there are. The hash has no secret, so a hostile file
// can hold any number of texts with one hash: a search ends after kLongestProbe places, and a text that finds no place
// by then isn't stored. That costs memory, nothing else, since equal texts are never told apart by their place.
class clsRefCountedObjectCache
{
public:
    explicit clsRefCountedObjectCache(clsProfArena& arena) : _arena(arena) {}
    clsRefCountedObjectCache(const clsRefCountedObjectCache&) = delete;
    clsRefCountedObjectCache& operator=(const clsRefCountedObjectCache&) = delete;

    // The table's text that is equal, which is made if there is none; null if it finds no place. `hash` is the text's.
    const scProfText* Intern(std::wstring_view text, std::uint64_t hash);

    std::size_t Count() const;

private:
    static constexpr std::uint32_t kBuckets = 256;
    static constexpr std::uint32_t kFirstCapacity = 8;
    static constexpr std::uint32_t kLongestProbe = 32;

    // A text and 16 bits of its hash in one word, so that a table takes little beside its texts and a search looks at
    // few of them. Where an address should have more than its usual 48 bits the text isn't stored.
    class Slot
    {
    public:
        bool IsFree() const { return _bits == 0; }
        bool MayHold(std::uint32_t hash) const { return _bits >> kAddressBits == TagOf(hash); }
        const scProfText* Text() const { return reinterpret_cast<const scProfText*>(_bits & kAddressMask); }

        bool Take(const scProfText* text)
        {
            const auto address = reinterpret_cast<std::uintptr_t>(text);
            if ((address & ~kAddressMask) != 0)
                return false;
            _bits = TagOf(text->hash) << kAddressBits | address;
            return true;
        }

    private:
        static constexpr unsigned kAddressBits = 48;
        static constexpr std::uint64_t kAddressMask = (std::uint64_t{1} << kAddressBits) - 1;

        // Of the kept hash the bits that don't choose the place in small tables.
        static std::uint64_t TagOf(std::uint32_t hash) { return hash >> (scProfText::kHashBits - 16); }

        std::uint64_t _bits = 0;
    };

    struct Bucket
    {
        Slot* slots;
        std::uint32_t capacity; // a power of two, or 0 before the first text
        std::uint32_t count;
    };

    static Slot* FindPlace(const Bucket& bucket, std::wstring_view text, std::uint32_t hash);
    void Grow(Bucket& bucket);

    clsProfArena& _arena;
    Bucket _buckets[kBuckets] = {};
};

} // namespace qx
