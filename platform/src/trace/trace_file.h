// The file of a session, to which all processes append.
#pragma once

#include "base/descriptor.h"

#include <cstdint>
#include <string>

namespace qxplatform
{

// The file begins with this head.
struct TraceFileHead
{
    char magic[8];            // QXTRACE and the version of the format
    std::uint64_t startTime;  // nanoseconds of the monotonic clock
    std::uint64_t systemTime; // the same moment in nanoseconds since 1970
};

// Chunks follow, each appended by a single write, so that a write that fails half-way or a damaged place costs only the
// chunk: a reader goes on at the next one.
struct TraceChunkHead
{
    enum Kind : std::uint32_t
    {
        kEvents = 0,
        kProcessName = 1, // in UTF-8
    };

    char magic[4]; // QXCH
    std::uint32_t kind;
    std::uint32_t processId;
    std::uint32_t size;     // of what follows, a multiple of 8 bytes
    std::uint64_t lost;     // events of the process that were lost since its last chunk
    std::uint64_t checksum; // of what follows
};
static_assert(sizeof(TraceFileHead) == 24 && sizeof(TraceChunkHead) == 32);

// The file as one process writes it.
class TraceFile
{
public:
    constexpr TraceFile() = default;

    // Opens an existing file of the user, unless it is open. Holds a shared lock on it until it is closed, so that
    // whoever stops the session can wait for the last write.
    bool Open(const std::string& path);
    void Close();
    // Appends all events of the process. Those that can't be written, because the disk or the file is full, count as
    // lost.
    void WriteEvents();

    // No process appends to a longer file.
    static constexpr std::uint64_t kLongest = std::uint64_t{1} << 30;

private:
    bool WriteChunk(TraceChunkHead::Kind kind, std::string& chunk);

    int _file = -1;
    std::uint64_t _lost = 0;
};

// Creates the file of a new session. Returns false with errno on failure, also if the file exists.
bool CreateTraceFile(const std::string& path, std::uint64_t& startTime);

} // namespace qxplatform
