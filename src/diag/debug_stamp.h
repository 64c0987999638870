// What stands in front of a line's message: time, thread, processor, running digit, section and indentation.
#pragma once

#include "core/critical_section.h"
#include "diag/debug_line_text.h"

#include <windows.h>

#include <string_view>

namespace qx
{

// Where the time comes from: the wall clock, or a counter that begins with the first line.
class DebugTimeSource
{
public:
    struct Counter
    {
        BOOL(WINAPI* read)(LARGE_INTEGER*);
        BOOL(WINAPI* readFrequency)(LARGE_INTEGER*);
    };

    explicit DebugTimeSource(Counter counter = {&QueryPerformanceCounter, &QueryPerformanceFrequency})
        : _counter(counter)
    {
    }

    // The user's setting ForceUsePerfCounters decides at the first call, for good.
    bool UsesCounter();
    // Milliseconds since the decision for the counter.
    long long Elapsed() const;

private:
    void Decide();

    const Counter _counter;
    clsCriticalSection _lock;
    bool _isDecided = false;
    bool _usesCounter = false;
    long long _frequency = 0;
    long long _base = 0;
};

struct scDebugStamp
{
    bool usesCounter = false;
    SYSTEMTIME time = {};  // of the wall clock
    long long elapsed = 0; // milliseconds of the counter
    unsigned thread = 0;
    unsigned processor = 0; // counted through all groups
    unsigned counter = 0;   // of the process's lines; its last digit is shown
};

// Present time, thread and processor.
scDebugStamp MakeDebugStamp(DebugTimeSource& source, unsigned processor, unsigned counter);

// `section` is empty for a line without one. The depth is that of the line, 0 to 50.
void AppendStamp(DebugLineText& line, const scDebugStamp& stamp, std::wstring_view section, int depth);

// 1 where the system doesn't tell.
unsigned CurrentProcessor();

} // namespace qx
