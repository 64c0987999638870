// The intern table of a job, which stores each distinct text once.
#pragma once

#include "prof/text_record.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace qx
{

// Unlike in a cache, nothing expires: the table contains the texts that are in use. A table that counts references
// frees a text with its last reference. A table that doesn't count them only grows, and is freed with the job's arena.
//
// The low 8 bits of a text's hash select one of 256 buckets. Each bucket is a hash set with open addressing, in which a
// search takes one or two memory accesses regardless of the number of texts. The hash has no secret key, so a hostile
// file can contain any number of texts with the same hash. A search therefore stops after kLongestProbe slots, and a
// text that finds no free slot by then isn't stored. This costs only memory, because texts are always compared by
// content.
class clsRefCountedObjectCache
{
public:
    enum class Counting
    {
        Off,
        On
    };

    clsRefCountedObjectCache(clsProfArena& arena, Counting counting) : _arena(arena), _counting(counting) {}
    clsRefCountedObjectCache(const clsRefCountedObjectCache&) = delete;
    clsRefCountedObjectCache& operator=(const clsRefCountedObjectCache&) = delete;

    // Returns the equal text of the table, inserting one if necessary. Returns null if no slot is free within reach.
    // `hash` must be the hash of `text`.
    // If the table counts references, the caller gets one.
    const scProfText* Intern(std::wstring_view text, std::uint64_t hash);

    // Releases one reference. Only for tables that count references.
    void Release(const scProfText* text) noexcept;

    std::size_t Count() const;

private:
    static constexpr std::uint32_t kBuckets = 256;
    static constexpr std::uint32_t kFirstCapacity = 8;
    static constexpr std::uint32_t kLongestProbe = 32;

    // Precedes a text whose references are counted.
    struct scCount
    {
        std::uint32_t references;
        std::uint32_t bucket;
    };

    // A text pointer and 16 bits of the text's hash in one word. This keeps the table small, and a search reads few
    // texts. A text whose address needs more than the usual 48 bits isn't stored.
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

        // Returns the bits of the stored hash that don't select the slot in small tables.
        static std::uint64_t TagOf(std::uint32_t hash) { return hash >> (scProfText::kHashBits - 16); }

        std::uint64_t _bits = 0;
    };

    struct Bucket
    {
        Slot* slots;
        std::uint32_t capacity; // a power of two, or 0 before the first text
        std::uint32_t count;
    };

    static scCount& CountOf(const scProfText* text)
    {
        return *(reinterpret_cast<scCount*>(const_cast<scProfText*>(text)) - 1);
    }

    static Slot* FindPlace(const Bucket& bucket, std::wstring_view text, std::uint32_t hash);
    const scProfText* Make(std::wstring_view text, std::uint64_t hash);
    static void Remove(Bucket& bucket, const scProfText* text);
    void Grow(Bucket& bucket);

    clsProfArena& _arena;
    const Counting _counting;
    Bucket _buckets[kBuckets] = {};
};

} // namespace qx
