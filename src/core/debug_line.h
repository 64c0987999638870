#pragma once

#include <atomic>
#include <cstdarg>

// The trace lines of the whole library. Everyone may include this header; the debug output stands far above and enters
// itself here as the sink. Formats are wide, in the formatter's own dialect (%s wide, %hs narrow).
namespace qx
{

// Takes the lines, on whatever thread they are written. The sink formats, so nothing is formatted without one.
class DebugLineSink
{
public:
    // Whether a line would reach anyone at present.
    virtual bool IsActive() { return true; }

    // `format` is null where only the nesting changes.
    virtual void Line(int indentChange, const wchar_t* format, va_list arguments) = 0;

protected:
    ~DebugLineSink() = default;
};

inline std::atomic<DebugLineSink*> debugLineSink = nullptr;

// Gives the former sink. Null takes the sink away; a call that is under way on another thread may still reach it.
inline DebugLineSink* SetDebugLineSink(DebugLineSink* sink)
{
    return debugLineSink.exchange(sink, std::memory_order_acq_rel);
}

// The test in front of every line. Without a sink it costs the reading of one word.
inline bool UtilIsDebugActive()
{
    DebugLineSink* const sink = debugLineSink.load(std::memory_order_acquire);
    return sink != nullptr && sink->IsActive();
}

// Hands a line to the sink, if there is one. The two functions below test for it before they come here.
void WriteDebugLine(int indentChange, const wchar_t* format, ...);

template <class... Arguments>
inline void DebugLine(const wchar_t* format, Arguments... arguments)
{
    if (UtilIsDebugActive())
        WriteDebugLine(0, format, arguments...);
}

// A line that opens (above 0) or closes (below 0) a level of nesting; only the sign counts. Null for `format` changes
// the nesting without a line.
template <class... Arguments>
inline void DebugLineIndent(int indentChange, const wchar_t* format, Arguments... arguments)
{
    if (UtilIsDebugActive())
        WriteDebugLine(indentChange, format, arguments...);
}

} // namespace qx
