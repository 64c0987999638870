// Reads the file of recorded markers that the platform library writes on linux.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace qxut
{

// A span or a message on a lane.
struct TraceMark
{
    enum class Kind
    {
        Span,
        UnfinishedSpan, // lasts until the last event of the file
        Message,
    };

    Kind kind;
    std::uint32_t processId;
    std::uint32_t threadId;
    std::size_t lane;   // an index of TraceContents::lanes
    std::uint64_t time; // nanoseconds since the start of the recording
    std::uint64_t duration = 0;
    std::u16string text;
};

struct TraceLane
{
    std::uint32_t processId;
    std::u16string name;
};

struct TraceContents
{
    bool isTrace = false;    // false if the file isn't a trace at all
    std::size_t damaged = 0; // places that were left out
    std::uint64_t lost = 0;  // events that the writers couldn't store
    std::uint64_t start = 0; // nanoseconds since 1970
    std::map<std::uint32_t, std::string> processes;
    std::vector<TraceLane> lanes;
    std::vector<TraceMark> marks; // in ascending order of their times
};

// Never fails: what is damaged is left out and counted. Takes time in proportion to the size.
TraceContents ReadTrace(std::string_view bytes);

} // namespace qxut
