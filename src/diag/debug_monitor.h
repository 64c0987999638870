// The interface for a live channel to a monitor program. It has no implementation yet; the debug output uses only this
// interface.
#pragma once

#include <cstddef>

namespace qx
{

// All functions are called with the main lock of the debug output held. Implementations must not report failures to the
// debug output.
class DebugMonitor
{
public:
    // Called by IsActive of the debug output. Detects a monitor that was started or restarted.
    virtual void Search() = 0;

    // Returns true if a monitor is running and currently wants lines.
    virtual bool IsRecording() const = 0;

    // Returns true if there is, or will be, a channel for SendData(). Otherwise lines are sent with SendText().
    virtual bool HasData() const = 0;
    // Returns true if this channel is open. It carries time, thread and depth next to the message, so lines have no
    // stamp.
    virtual bool IsDataOpen() const = 0;
    // A null tag means the library's name.
    virtual void SendData(
        const wchar_t* moduleTag, int first, int second, int depth, const wchar_t* text, std::size_t length) = 0;

    // Returns the code page of the text for SendText().
    virtual unsigned CodePage() const = 0;
    virtual void SendText(const char* text) = 0;

protected:
    ~DebugMonitor() = default;
};

} // namespace qx
