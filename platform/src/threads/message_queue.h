// The messages that wait for a thread.
#pragma once

#include <winuser.h>

#include <deque>
#include <optional>

namespace qxplatform
{

// All of it is guarded by the dispatcher's lock.
class MessageQueue
{
public:
    struct Filter
    {
        HWND window; // null for any, -1 for those without a window
        UINT first;
        UINT last; // both 0 for all
    };

    void Post(const MSG& message);

    // The first message that the filter lets through.
    std::optional<MSG> Get(const Filter& filter, bool remove);

    // What counts as looked at is not new any more.
    void Look(DWORD kinds) { _new &= ~kinds; }

    // The kinds of input (QS_...) that came since somebody looked.
    DWORD New() const { return _new; }

private:
    std::deque<MSG> _posted;
    DWORD _new = 0;
};

} // namespace qxplatform
