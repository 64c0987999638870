// The named block in shared memory that describes the session of the user's processes.
#pragma once

#include "base/descriptor.h"

#include <minwindef.h>

#include <atomic>
#include <cstdint>
#include <string>

namespace qxplatform
{

// A session, or the default values for none.
struct TraceSession
{
    std::uint64_t id = 0; // differs between sessions; 0 for none
    std::uint8_t level = 0;
    std::uint64_t anyKeywords = 0;
    std::uint64_t allKeywords = 0;
    std::string file;

    bool operator==(const TraceSession&) const = default;
};

// The block is mapped by each process that has a provider, and by the program that controls the session. Processes with
// different values of QXPLATFORM_HOME have different blocks. Each user holds a shared lock on the block's file. The
// last one removes the file, unless a session exists.
class SessionBlock
{
public:
    SessionBlock() = default;
    SessionBlock(const SessionBlock&) = delete;
    SessionBlock& operator=(const SessionBlock&) = delete;
    ~SessionBlock();

    // Opens the block, creating it if necessary. Returns false with errno on failure: EACCES if the folder or the block
    // belongs to another user or is accessible to others.
    bool Open();

    // Returns the session. While another process is changing it, there is none.
    TraceSession Read() const;
    // Changes the session and wakes the processes that wait. `file` may have kLongestFile bytes.
    void Write(const TraceSession& session);

    // Waits until the counter differs from the value. May return early.
    LONG Counter() const;
    void WaitForChange(LONG counter) const;
    // Wakes all waiting threads without changing the session.
    void Nudge();
    // Returns true if the name no longer leads to the block, so that nobody can change its session any more.
    bool IsForgotten() const;

    // Takes a lock between programs that change the session, which this object holds until it is destroyed. Returns
    // false with errno if another program holds it.
    bool Lock() const;

    static constexpr std::size_t kLongestFile = 4095;

private:
    struct Layout;

    bool OpenOnce();

    Layout* _layout = nullptr;
    Descriptor _folder;
    std::string _name;
    Descriptor _file;
};

} // namespace qxplatform
