// Starts and stops the session.
#include <evntprov.h>

#include "base/fail.h"
#include "base/text.h"
#include "files/path.h"
#include "trace/session_block.h"
#include "trace/trace_file.h"

#include <cerrno>
#include <ctime>
#include <new>

#include <fcntl.h>
#include <sys/file.h>

using namespace qxplatform;

namespace
{

// Returns 0 or an error code.
DWORD OpenLocked(SessionBlock& block)
{
    return block.Open() && block.Lock() ? ERROR_SUCCESS : ErrorFromErrno(errno);
}

// The processes hold shared locks on the file as long as they write to it. A stopped process is not waited for.
void WaitForWriters(const std::string& path)
{
    constexpr int kLooks = 200;
    constexpr timespec kPause = {0, 5'000'000};
    const Descriptor file(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    for (int look = 0; file && look < kLooks && flock(file.Get(), LOCK_EX | LOCK_NB) != 0; ++look)
        nanosleep(&kPause, nullptr);
}

DWORD StartSession(LPCWSTR name, DWORD level)
{
    const NativePath path = ToFullNative(name);
    if (path.IsEmpty())
        return GetLastError();
    TraceSession session;
    session.file = path.text;
    if (session.file.size() > SessionBlock::kLongestFile)
        return ERROR_FILENAME_EXCED_RANGE;
    SessionBlock block;
    if (const DWORD error = OpenLocked(block); error != ERROR_SUCCESS)
        return error;
    if (block.Read().id != 0)
        return ERROR_ALREADY_EXISTS;
    if (!CreateTraceFile(session.file, session.id))
        return errno == EEXIST ? ERROR_FILE_EXISTS : ErrorFromErrno(errno);
    session.level = static_cast<std::uint8_t>(level);
    session.anyKeywords = ~std::uint64_t{0};
    block.Write(session);
    return ERROR_SUCCESS;
}

DWORD StopSession(LPWSTR name, DWORD size)
{
    SessionBlock block;
    if (const DWORD error = OpenLocked(block); error != ERROR_SUCCESS)
        return error;
    const TraceSession session = block.Read();
    if (session.id == 0)
        return ERROR_NOT_FOUND;
    block.Write(TraceSession());
    WaitForWriters(session.file);
    CopyOut(FromNative(session.file), name, size);
    return ERROR_SUCCESS;
}

} // namespace

DWORD WINAPI QxStartTrace(LPCWSTR name, DWORD level)
try
{
    return name && level <= 0xFF ? StartSession(name, level) : ERROR_INVALID_PARAMETER;
}
catch (const std::bad_alloc&)
{
    return ERROR_NOT_ENOUGH_MEMORY;
}

DWORD WINAPI QxStopTrace(LPWSTR name, DWORD size)
try
{
    return StopSession(name, size);
}
catch (const std::bad_alloc&)
{
    return ERROR_NOT_ENOUGH_MEMORY;
}
