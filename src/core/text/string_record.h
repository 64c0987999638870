#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace qx
{

// The text that several String objects share: this head and behind it the characters, in one allocation. The text is
// read-only as long as more than one String uses it.
struct alignas(16) StringRecord
{
    wchar_t* text;        // the characters behind the head
    std::size_t capacity; // in characters, terminator included
    std::atomic<std::int32_t> usage;

    // With usage 1 and an empty text.
    static StringRecord* Create(std::size_t capacity);

    void AddUser() { usage.fetch_add(1, std::memory_order_relaxed); }
    bool IsShared() const { return usage.load(std::memory_order_acquire) > 1; }

    // Gives up one usage; the last one frees the record. One too many is reported, and the record is left alone.
    static void Release(StringRecord* record) noexcept;

    // The capacity that a text of so many characters asks for: room for the terminator, in steps of 8.
    static constexpr std::size_t CapacityFor(std::size_t length) { return (length + 8) & ~std::size_t{7}; }
};

} // namespace qx
