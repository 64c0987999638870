#include "files/range_lock.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <limits>

#include <fcntl.h>

namespace qxplatform
{
namespace
{

struct flock Request(int type, const Range& range)
{
    struct flock request
    {
    };
    request.l_type = static_cast<short>(type);
    request.l_whence = SEEK_SET;
    request.l_start = range.start;
    request.l_len = range.length;
    return request;
}

int TypeOf(LockKind kind)
{
    return kind == LockKind::Shared ? F_RDLCK : F_WRLCK;
}

} // namespace

LockResult LockRange(int descriptor, LockKind kind, const Range& range)
{
    struct flock request = Request(TypeOf(kind), range);
    if (fcntl(descriptor, F_OFD_SETLK, &request) == 0)
        return LockResult::Granted;
    return errno == EAGAIN || errno == EACCES ? LockResult::Refused : LockResult::Unsupported;
}

void UnlockRange(int descriptor, const Range& range)
{
    struct flock request = Request(F_UNLCK, range);
    fcntl(descriptor, F_OFD_SETLK, &request);
}

bool FindForeignLock(int descriptor, LockKind kind, const Range& range, Range* found)
{
    struct flock request = Request(TypeOf(kind), range);
    if (fcntl(descriptor, F_OFD_GETLK, &request) != 0 || request.l_type == F_UNLCK)
        return false;
    if (found != nullptr)
    {
        constexpr std::int64_t kEndOfAll = std::numeric_limits<std::int64_t>::max();
        *found = {request.l_start, request.l_len == 0 ? kEndOfAll - request.l_start : request.l_len};
    }
    return true;
}

} // namespace qxplatform
