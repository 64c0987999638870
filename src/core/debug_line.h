#pragma once

#include <atomic>
#include <cstdarg>

// The trace lines of the whole library. Every file may include this header. The debug output is in a much higher layer
// and registers itself here as the sink. Formats are wide, in the formatter's own dialect (%s wide, %hs narrow).
namespace qx
{

// Receives the lines on whatever thread writes them. The sink does the formatting, so nothing is formatted without a
// sink.
class DebugLineSink
{
public:
    // Returns true if a line would currently reach an output.
    virtual bool IsActive() { return true; }

    // `format` is null if only the nesting changes.
    virtual void Line(int indentChange, const wchar_t* format, va_list arguments) = 0;

protected:
    ~DebugLineSink() = default;
};

inline std::atomic<DebugLineSink*> debugLineSink = nullptr;

// Sets the sink and returns the previous one. Null removes the sink, but calls in progress on other threads may still
// reach it.
inline DebugLineSink* SetDebugLineSink(DebugLineSink* sink)
{
    return debugLineSink.exchange(sink, std::memory_order_acq_rel);
}

// Returns true if lines are being received; checked before every line. Without a sink it costs one atomic load.
inline bool UtilIsDebugActive()
{
    DebugLineSink* const sink = debugLineSink.load(std::memory_order_acquire);
    return sink != nullptr && sink->IsActive();
}

// Passes a line to the sink, if there is one. The two functions below check UtilIsDebugActive first.
void WriteDebugLine(int indentChange, const wchar_t* format, ...);

template <class... Arguments>
inline void DebugLine(const wchar_t* format, Arguments... arguments)
{
    if (UtilIsDebugActive())
        WriteDebugLine(0, format, arguments...);
}

// Writes a line that opens (`indentChange` above 0) or closes (below 0) a nesting level; only the sign matters. With a
// null `format`, the nesting changes without a line.
template <class... Arguments>
inline void DebugLineIndent(int indentChange, const wchar_t* format, Arguments... arguments)
{
    if (UtilIsDebugActive())
        WriteDebugLine(indentChange, format, arguments...);
}

} // namespace qx
