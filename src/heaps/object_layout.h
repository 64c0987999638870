// The memory format of objects. Hosts and debuggers read it, so the offsets never change.
//
// Debug object: scDebugHeader, the object, the fence. Plain object: kPlainMagic (4 bytes), the object. Object without a
// heap: its size (8 bytes), the object.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace qx
{

struct scCallChain;

constexpr std::uint32_t kFirstMagic = 0xC0FFEEEE;
constexpr std::uint32_t kSecondMagic = 0xAFFEAFFE;
constexpr std::uint32_t kPlainMagic = 0xFAAFFAAF;
constexpr std::uint32_t kFence = 0xE5E55E5E;
constexpr std::uint8_t kFreedByte = 0xCC;
constexpr std::uint8_t kFreshByte = 0xF5;

#pragma pack(push, 4)
struct scDebugHeader
{
    std::uint32_t firstMagic;
    std::uint32_t reserved;
    HANDLE systemHeap;
    std::uint32_t tick; // tick count at the allocation
    std::uint32_t reserved2;
    const scCallChain* chain; // may be null
    std::uint32_t tag;
    std::int32_t size; // of the object
    std::uint32_t secondMagic;
};
#pragma pack(pop)

constexpr std::size_t kDebugHeaderSize = sizeof(scDebugHeader);
constexpr std::size_t kDebugOverhead = kDebugHeaderSize + sizeof kFence;
constexpr std::size_t kPlainOverhead = sizeof kPlainMagic;
constexpr std::size_t kNoHeapOverhead = 8;

static_assert(kDebugHeaderSize == 44 && kDebugOverhead == 48);
static_assert(offsetof(scDebugHeader, systemHeap) == 8 && offsetof(scDebugHeader, tick) == 16);
static_assert(offsetof(scDebugHeader, chain) == 24 && offsetof(scDebugHeader, tag) == 32);
static_assert(offsetof(scDebugHeader, size) == 36 && offsetof(scDebugHeader, secondMagic) == 40);

inline char* BytesAt(const void* address, std::ptrdiff_t offset)
{
    return reinterpret_cast<char*>(reinterpret_cast<std::uintptr_t>(address) + static_cast<std::uintptr_t>(offset));
}

inline std::uint32_t WordAt(const void* address)
{
    std::uint32_t word;
    std::memcpy(&word, address, sizeof word);
    return word;
}

// Returns true if the fence follows the object inside the block. The size may be damaged, so the place of the fence is
// checked before it is read.
inline bool HasFenceInBlock(const void* object, std::int32_t size, std::size_t blockSize)
{
    const std::int64_t end = std::int64_t{size} + static_cast<std::int64_t>(kDebugOverhead);
    return end >= static_cast<std::int64_t>(sizeof kFence) && end <= static_cast<std::int64_t>(blockSize) &&
           WordAt(BytesAt(object, size)) == kFence;
}

inline void PutWord(void* address, std::uint32_t word)
{
    std::memcpy(address, &word, sizeof word);
}

} // namespace qx
