#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace qx
{

// The text shared by several String objects: this header, followed by the characters in the same allocation. The text
// is read-only while more than one String uses it.
struct alignas(16) StringRecord
{
    wchar_t* text;        // the characters, which follow this header
    std::size_t capacity; // in characters, terminator included
    std::atomic<std::int32_t> usage;

    // Allocates a record with a reference count of 1 and an empty text.
    static StringRecord* Create(std::size_t capacity);

    void AddUser() { usage.fetch_add(1, std::memory_order_relaxed); }
    bool IsShared() const { return usage.load(std::memory_order_acquire) > 1; }

    // Releases one reference and frees the record after the last. A superfluous release is reported and leaves the
    // record unchanged.
    static void Release(StringRecord* record) noexcept;

    // Returns the capacity for a text of `length` characters: a multiple of 8 with room for the terminator.
    static constexpr std::size_t CapacityFor(std::size_t length) { return (length + 8) & ~std::size_t{7}; }
};

} // namespace qx
