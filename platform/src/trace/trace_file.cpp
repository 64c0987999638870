#include "trace/trace_file.h"

#include "trace/event_ring.h"

#include <cerrno>
#include <cstring>
#include <ctime>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace qxplatform
{
namespace
{

std::uint64_t Nanoseconds(clockid_t clock)
{
    timespec now{};
    clock_gettime(clock, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * 1'000'000'000 + static_cast<std::uint64_t>(now.tv_nsec);
}

// Processes words of 8 bytes, which takes little time compared with the write.
std::uint64_t ChecksumOf(std::string_view bytes)
{
    std::uint64_t sum = 0xCBF29CE484222325;
    for (std::size_t position = 0; position + 8 <= bytes.size(); position += 8)
    {
        std::uint64_t word;
        std::memcpy(&word, bytes.data() + position, 8);
        sum = (sum ^ word) * 0x9DDFEA08EB382D69;
        sum ^= sum >> 47;
    }
    return sum;
}

std::uint64_t CountEvents(std::string_view bytes)
{
    std::uint64_t count = 0;
    for (EventHead head; bytes.size() >= sizeof(head); bytes.remove_prefix(head.size), ++count)
        std::memcpy(&head, bytes.data(), sizeof(head));
    return count;
}

} // namespace

bool CreateTraceFile(const std::string& path, std::uint64_t& startTime)
{
    Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    startTime = Nanoseconds(CLOCK_MONOTONIC);
    const TraceFileHead head = {{'Q', 'X', 'T', 'R', 'A', 'C', 'E', 1}, startTime, Nanoseconds(CLOCK_REALTIME)};
    if (!file)
        return false;
    if (WriteAll(file.Get(), {reinterpret_cast<const char*>(&head), sizeof(head)}))
        return true;
    const int code = errno;
    unlink(path.c_str());
    errno = code;
    return false;
}

bool TraceFile::Open(const std::string& path)
{
    if (_file >= 0)
        return true;
    Descriptor file(open(path.c_str(), O_WRONLY | O_APPEND | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status;
    if (!file || fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_uid != geteuid() ||
        flock(file.Get(), LOCK_SH | LOCK_NB) != 0)
        return false;
    _file = file.Release();
    _lost = 0;
    std::string chunk(sizeof(TraceChunkHead), '\0');
    chunk += program_invocation_short_name;
    WriteChunk(TraceChunkHead::kProcessName, chunk);
    return true;
}

void TraceFile::Close()
{
    if (_file >= 0)
        close(_file); // and unlocks it
    _file = -1;
}

void TraceFile::WriteEvents()
{
    if (_file < 0)
        return;
    std::string chunk(sizeof(TraceChunkHead), '\0');
    EventRing* ring = nullptr;
    while ((ring = TakeFromRings(ring, chunk, _lost)) != nullptr)
    {
        if (!WriteChunk(TraceChunkHead::kEvents, chunk))
            _lost += CountEvents(std::string_view(chunk).substr(sizeof(TraceChunkHead)));
        chunk.resize(sizeof(TraceChunkHead));
    }
    if (_lost != 0)
        WriteChunk(TraceChunkHead::kEvents, chunk);
}

// Fills in the head. The count of lost events is stored in the first chunk that can be written.
bool TraceFile::WriteChunk(TraceChunkHead::Kind kind, std::string& chunk)
{
    chunk.resize((chunk.size() + 7) / 8 * 8);
    const std::string_view contents = std::string_view(chunk).substr(sizeof(TraceChunkHead));
    const TraceChunkHead head = {{'Q', 'X', 'C', 'H'}, kind, static_cast<std::uint32_t>(getpid()),
        static_cast<std::uint32_t>(contents.size()), _lost, ChecksumOf(contents)};
    std::memcpy(chunk.data(), &head, sizeof(head));
    struct stat status;
    if (fstat(_file, &status) != 0 || static_cast<std::uint64_t>(status.st_size) + chunk.size() > kLongest)
        return false;
    if (write(_file, chunk.data(), chunk.size()) != static_cast<ssize_t>(chunk.size()))
        return false;
    _lost = 0;
    return true;
}

} // namespace qxplatform
