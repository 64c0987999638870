#include "files/share_mode.h"

#include <winerror.h>
#include <winnt.h>

#include "files/claim.h"

#include <atomic>
#include <cstdint>

#include <unistd.h>

namespace qxplatform
{
namespace
{

constexpr unsigned kModeBits = 3;
constexpr unsigned kSlotCount = 1 << (2 * kModeBits);
constexpr std::int64_t kSlotLength = kShareModeRange.length / kSlotCount;

Range SlotRange(unsigned slot)
{
    return {kShareModeRange.start + slot * kSlotLength, kSlotLength};
}

unsigned SlotOf(const ShareMode& mode)
{
    return mode.access << kModeBits | mode.share;
}

ShareMode ModeOf(const Range& lock)
{
    // A lock that extends beyond the layer's range belongs to another program, which has read-locked the whole file.
    // Such a lock excludes writers.
    if (!kShareModeRange.Contains(lock))
        return {FILE_SHARE_READ, FILE_SHARE_READ | FILE_SHARE_DELETE};
    const unsigned slot = static_cast<unsigned>((lock.start - kShareModeRange.start) / kSlotLength);
    return {slot >> kModeBits, slot & ((1 << kModeBits) - 1)};
}

bool Excludes(const ShareMode& first, const ShareMode& second)
{
    return (first.access & ~second.share) != 0 || (second.access & ~first.share) != 0;
}

// Returns the place of a lock in the slot of the mode. Shared locks of one slot overlap. A write-only descriptor gets
// no shared locks; its exclusive lock has a place of its own in the slot.
Range LockFor(bool canRead, const ShareMode& mode)
{
    const Range slot = SlotRange(SlotOf(mode));
    if (canRead)
        return {slot.start, 1};
    static std::atomic<std::int64_t> count = 0;
    return {slot.start + 1 + (getpid() * 4096 + count++) % (kSlotLength - 1), 1};
}

// Returns true if a lock in the given part of the range (in slots, from `first` to before `end`) excludes the mode. The
// kernel reports one lock at a time; a lock that doesn't exclude the mode splits the range in two.
bool MeetsExcluding(int descriptor, const ShareMode& mode, unsigned first, unsigned end)
{
    if (first >= end)
        return false;
    const Range range{SlotRange(first).start, (end - first) * kSlotLength};
    Range found;
    if (!FindForeignLock(descriptor, LockKind::Exclusive, range, &found))
        return false;
    const ShareMode other = ModeOf(found);
    if (Excludes(mode, other))
        return true;
    if (kShareModeRange.Contains(found))
    {
        const unsigned slot = SlotOf(other);
        return MeetsExcluding(descriptor, mode, first, slot) || MeetsExcluding(descriptor, mode, slot + 1, end);
    }
    // The lock of another program hides later locks. It covers the whole range, so split the range evenly.
    const unsigned middle = first + (end - first) / 2;
    return middle > first &&
           (MeetsExcluding(descriptor, mode, first, middle) || MeetsExcluding(descriptor, mode, middle, end));
}

} // namespace

unsigned SharedAccessOf(DWORD access)
{
    return (access & (FILE_READ_DATA | FILE_EXECUTE) ? FILE_SHARE_READ : 0u) |
           (access & (FILE_WRITE_DATA | FILE_APPEND_DATA) ? FILE_SHARE_WRITE : 0u) |
           (access & DELETE ? FILE_SHARE_DELETE : 0u);
}

DWORD TakeShareMode(int descriptor, bool canRead, const ShareMode& mode)
{
    // Opens for attributes only never conflict.
    if (mode.access == 0)
        return ERROR_SUCCESS;
    const LockKind kind = canRead ? LockKind::Shared : LockKind::Exclusive;
    const Range own = LockFor(canRead, mode);
    const LockResult result = LockWithClaim(descriptor, kind,
        {[&] { return LockRange(descriptor, kind, own); },
            [&] { return MeetsExcluding(descriptor, mode, 0, kSlotCount); },
            [&]
            {
                UnlockRange(descriptor, own);
            }});
    return result == LockResult::Refused ? ERROR_SHARING_VIOLATION : ERROR_SUCCESS;
}

} // namespace qxplatform
