// Byte range locks that belong to an opened file. The kernel holds them: they work between processes and are released
// with the descriptor, however its process ends. (Linux: open file description locks.)
#pragma once

#include <cstdint>

namespace qxplatform
{

enum class LockKind
{
    Shared,    // requires a descriptor with read access
    Exclusive, // requires a descriptor with write access
};

struct Range
{
    std::int64_t start = 0;
    std::int64_t length = 0;

    std::int64_t end() const { return start + length; }
    bool Overlaps(const Range& other) const { return start < other.end() && other.start < end(); }
    bool Contains(const Range& other) const { return start <= other.start && other.end() <= end(); }
};

enum class LockResult
{
    Granted,
    Refused,
    Unsupported, // the file system doesn't support locks
};

LockResult LockRange(int descriptor, LockKind kind, const Range& range);
void UnlockRange(int descriptor, const Range& range);

// Returns true if another opened file has a lock in the range that conflicts with a lock of this kind, and optionally
// returns that lock.
bool FindForeignLock(int descriptor, LockKind kind, const Range& range, Range* found = nullptr);

// The ranges of the layer's own locks, far beyond any data. See share_mode.h and claim.h.
inline constexpr std::int64_t kLayerStart = std::int64_t{1} << 62;
inline constexpr Range kShareModeRange{kLayerStart, std::int64_t{1} << 32};
inline constexpr Range kClaimRange{kShareModeRange.start + kShareModeRange.length, std::int64_t{1} << 52};
inline constexpr std::int64_t kLayerEnd = kLayerStart + (std::int64_t{1} << 53);

} // namespace qxplatform
