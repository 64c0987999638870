// The debug output of the process: receives all lines and passes them to the log file and the monitor.
#pragma once

#include "core/critical_section.h"
#include "core/debug_line.h"
#include "diag/debug_monitor.h"
#include "diag/debug_stamp.h"
#include "diag/log_file.h"

#include <atomic>
#include <cstdint>

namespace qx
{

// State shared by all copies of the library in a process: the nesting level and the line counter. Each copy has its own
// until a monitor channel supplies the shared block.
struct scLOGTAPInfoAppLocal
{
    std::atomic<std::int32_t> depth = 0; // the raw count; clamped when a line uses it
    std::atomic<std::uint32_t> counter = 0;
};

class clsDebugChannels final : private DebugLineSink
{
public:
    explicit clsDebugChannels(DebugTimeSource::Counter counter) : _timeSource(counter) {}
    clsDebugChannels() = default;
    clsDebugChannels(const clsDebugChannels&) = delete;
    clsDebugChannels& operator=(const clsDebugChannels&) = delete;

    // Creates the instance at the first call. It exists until the process ends, so calls are safe before the library's
    // start and after its end, when no lines are received.
    static clsDebugChannels& Instance();

    // While a log file or a monitor is set, this object receives the lines of the whole library.
    void SetLogFile(const DebugLogFile& file);
    void SetMonitor(DebugMonitor* monitor);
    // Calls `writeLastLine` and removes all sinks. If the lock isn't available within 100 ms, because a terminated
    // thread held it, the sinks are removed without a last line.
    void Close(void (*writeLastLine)() = nullptr);

    // Returns true if there is a log file or a recording monitor.
    bool IsActive() override;

    // Writes a line. `moduleTag` may be null or empty. Only the sign of `indentChange` matters. A null format changes
    // the nesting without writing a line. Never fails and doesn't change the last error.
    void Line(const wchar_t* moduleTag, int indentChange, const wchar_t* format, va_list arguments) noexcept;

    int Depth() const { return _pLOGTAPInfoAppLocal->depth; }

private:
    void Line(int indentChange, const wchar_t* format, va_list arguments) override
    {
        Line(nullptr, indentChange, format, arguments);
    }

    // The current receivers of a line.
    struct Wanted
    {
        bool asData = false;
        bool inLogFile = false;
        bool asStampedLine = false; // for the monitor
    };

    void EnterAsSink();
    Wanted WhatIsWanted();
    bool Send(const wchar_t* moduleTag, int depth, bool changesDepth, const wchar_t* format, va_list arguments);
    void SendData(const wchar_t* moduleTag, int depth, bool changesDepth, const wchar_t* format, va_list arguments);
    void MakeLine(DebugLineText& line, const wchar_t* moduleTag, int depth, unsigned processor, const wchar_t* format,
        va_list arguments);
    void HandOut(const DebugLineText& line, bool alsoToMonitor);
    void SendText(const DebugLineText& line);

    clsCriticalSection _mainLock; // recursive
    scLOGTAPInfoAppLocal _ownInfo;
    scLOGTAPInfoAppLocal* const _pLOGTAPInfoAppLocal = &_ownInfo;
    unsigned long long _lastCheck = 0;
    DebugLogFile _logFile;
    std::atomic<bool> _hasLogFile = false; // allows IsActive to work without the lock
    std::atomic<int> _outputGuard = 0;
    DebugMonitor* _monitor = nullptr;
    DebugTimeSource _timeSource;
};

// Writes a line with a module tag, for the exported functions.
void DebugLineTagged(const wchar_t* moduleTag, int indentChange, const wchar_t* format, va_list arguments) noexcept;

// Called when the library is loaded. Reads the log file setting and writes the first line of the process.
void StartDebugChannels();
// Called when the library is unloaded. Writes the last line and closes the debug output.
void CloseDebugChannels();

} // namespace qx
