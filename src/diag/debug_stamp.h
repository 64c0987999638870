// The stamp before a line's message: time, thread, processor, running digit, section and indentation.
#pragma once

#include "core/critical_section.h"
#include "diag/debug_line_text.h"

#include <windows.h>

#include <string_view>

namespace qx
{

// The time source: the wall clock, or a counter that starts with the first line.
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

    // Returns true if the counter is used. The user's setting ForceUsePerfCounters decides this once, at the first
    // call.
    bool UsesCounter();
    // Returns the milliseconds since the counter was selected.
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

// Returns whether the user's setting ForceUsePerfCounters selects the counter.
bool IsCounterForced();

struct scDebugStamp
{
    bool usesCounter = false;
    SYSTEMTIME time = {};  // if the wall clock is used
    long long elapsed = 0; // milliseconds, if the counter is used
    unsigned thread = 0;
    unsigned processor = 0; // numbered across all processor groups
    unsigned counter = 0;   // the number of the line in the process; the last digit is shown
};

// Returns a stamp with the current time and thread.
scDebugStamp MakeDebugStamp(DebugTimeSource& source, unsigned processor, unsigned counter);

// `section` may be empty. `depth` must be 0 to 50.
void AppendStamp(DebugLineText& line, const scDebugStamp& stamp, std::wstring_view section, int depth);

// Returns the number of the current processor, or 1 if the system doesn't report it.
unsigned CurrentProcessor();

} // namespace qx
