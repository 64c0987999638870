// The place for the live channel to a monitor program. Nothing in the library stands here yet; the debug output knows
// only this much of it.
#pragma once

#include <cstddef>

namespace qx
{

// All of it is called with the main lock of the debug output held. Failures must not go back into the debug output.
class DebugMonitor
{
public:
    // Part of the attach test: finds a monitor that has appeared, and one that was started anew.
    virtual void Search() = 0;

    // Whether a monitor is there and wants lines at present.
    virtual bool IsRecording() const = 0;

    // Whether there is, or will be, a channel for SendData(). Otherwise lines go by SendText().
    virtual bool HasData() const = 0;
    // Whether that channel is open: it carries time, thread and depth beside the message, so the line is not stamped.
    virtual bool IsDataOpen() const = 0;
    // A null tag stands for the library's name.
    virtual void SendData(
        const wchar_t* moduleTag, int first, int second, int depth, const wchar_t* text, std::size_t length) = 0;

    // The code page that SendText() takes.
    virtual unsigned CodePage() const = 0;
    virtual void SendText(const char* text) = 0;

protected:
    ~DebugMonitor() = default;
};

} // namespace qx
