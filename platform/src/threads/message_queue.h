// The message queue of a thread.
#pragma once

#include <winuser.h>

#include <list>
#include <optional>

namespace qxplatform
{

// Guarded by the dispatcher lock.
class MessageQueue
{
public:
    struct Filter
    {
        HWND window; // null for any window, -1 for messages without one
        UINT first;
        UINT last; // both 0 for all messages
    };

    void Post(const MSG& message);

    // Returns the first message that matches the filter.
    std::optional<MSG> Get(const Filter& filter, bool remove);

    // Messages of these kinds no longer count as new.
    void Look(DWORD kinds) { _new &= ~kinds; }

    // Returns the kinds of input (QS_...) that have arrived since the last check.
    DWORD New() const { return _new; }

private:
    std::list<MSG> _posted; // an empty one needs no memory
    DWORD _new = 0;
};

} // namespace qxplatform
