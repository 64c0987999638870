#include "files/byte_locks.h"

#include <winerror.h>

#include "files/claim.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace qxplatform
{
namespace
{

constexpr std::uint64_t kExactEnd = kLayerStart;

// Maps a caller's offset to the offset of the file at which it is locked. Callers may lock offsets up to 2^64, but
// Linux has only offsets up to 2^63, and the layer reserves a range of them. Therefore four successive offsets from
// 2^62 on, where no file has data, share one offset of the file. Locks there may conflict if they are less than four
// bytes apart, but no conflict is overlooked.
std::int64_t Place(std::uint64_t offset)
{
    return static_cast<std::int64_t>(
        offset < kExactEnd ? offset : static_cast<std::uint64_t>(kLayerEnd) + (offset - kExactEnd) / 4);
}

// The pieces of a range below and above the range reserved by the layer. A piece may be empty.
using Pieces = std::array<Range, 2>;

Pieces PiecesOf(std::uint64_t offset, std::uint64_t length)
{
    if (length == 0)
        return {};
    const std::int64_t first = Place(offset);
    const std::int64_t end = Place(offset + (length - 1)) + 1;
    const std::int64_t lowEnd = std::min(end, kLayerStart);
    const std::int64_t highFirst = std::max(first, kLayerEnd);
    return {Range{first, std::max<std::int64_t>(lowEnd - first, 0)},
        Range{highFirst, std::max<std::int64_t>(end - highFirst, 0)}};
}

bool Overlap(const Pieces& first, const Pieces& second)
{
    // Compare piece by piece, because no piece crosses the reserved range.
    return (first[0].length > 0 && second[0].length > 0 && first[0].Overlaps(second[0])) ||
           (first[1].length > 0 && second[1].length > 0 && first[1].Overlaps(second[1]));
}

void UnlockPieces(int descriptor, const Pieces& pieces)
{
    for (const Range& piece : pieces)
        if (piece.length > 0) // a length of 0 would mean everything up to the end
            UnlockRange(descriptor, piece);
}

LockResult LockPiece(int descriptor, LockKind kind, const Range& piece)
{
    return piece.length == 0 ? LockResult::Granted : LockRange(descriptor, kind, piece);
}

LockResult LockPieces(int descriptor, LockKind kind, const Pieces& pieces)
{
    LockResult result = LockPiece(descriptor, kind, pieces[0]);
    if (result != LockResult::Granted)
        return result;
    result = LockPiece(descriptor, kind, pieces[1]);
    if (result != LockResult::Granted)
        UnlockPieces(descriptor, {pieces[0], Range{}});
    return result;
}

bool MeetsOthers(int descriptor, const Pieces& pieces)
{
    return std::any_of(pieces.begin(), pieces.end(),
        [descriptor](const Range& piece)
        { return piece.length > 0 && FindForeignLock(descriptor, LockKind::Exclusive, piece); });
}

LockResult LockAlone(int descriptor, bool canWrite, const Pieces& pieces)
{
    if (canWrite)
        return LockPieces(descriptor, LockKind::Exclusive, pieces);
    // Callers may lock through a read-only handle, for which the kernel grants only shared locks.
    return LockWithClaim(descriptor, LockKind::Shared,
        {[&] { return LockPieces(descriptor, LockKind::Shared, pieces); },
            [&] { return MeetsOthers(descriptor, pieces); },
            [&]
            {
                UnlockPieces(descriptor, pieces);
            }});
}

} // namespace

DWORD ByteLocks::Lock(int descriptor, bool canWrite, std::uint64_t offset, std::uint64_t length)
{
    if (length > 0 && offset + (length - 1) < offset)
        return ERROR_INVALID_PARAMETER;
    const Pieces pieces = PiecesOf(offset, length);
    const std::lock_guard guard(_lock);
    // For the kernel, two locks of one descriptor are one lock; callers expect the second one to be refused.
    const bool isOwn = std::any_of(_records.begin(), _records.end(),
        [&pieces](const Record& record) { return Overlap(pieces, PiecesOf(record.offset, record.length)); });
    if (isOwn)
        return ERROR_LOCK_VIOLATION;
    switch (LockAlone(descriptor, canWrite, pieces))
    {
    case LockResult::Refused:
        return ERROR_LOCK_VIOLATION;
    case LockResult::Unsupported:
        return ERROR_NOT_SUPPORTED;
    case LockResult::Granted:
        break;
    }
    _records.push_back({offset, length});
    return ERROR_SUCCESS;
}

DWORD ByteLocks::Unlock(int descriptor, std::uint64_t offset, std::uint64_t length)
{
    const std::lock_guard guard(_lock);
    const auto record = std::find_if(_records.begin(), _records.end(),
        [&](const Record& candidate) { return candidate.offset == offset && candidate.length == length; });
    if (record == _records.end())
        return ERROR_NOT_LOCKED;
    _records.erase(record);
    UnlockPieces(descriptor, PiecesOf(offset, length));
    return ERROR_SUCCESS;
}

bool IsLockedByOthers(int descriptor, LockKind transfer, std::int64_t offset, std::size_t length)
{
    return length > 0 && offset < kLayerStart &&
           FindForeignLock(descriptor, transfer, {offset, static_cast<std::int64_t>(length)});
}

} // namespace qxplatform
