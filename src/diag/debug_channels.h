// The debug output of the process: takes lines from everyone, and hands them to the log file and to the monitor.
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

// What all copies of the library in one process are to share: the nesting of lines and their running number. Each copy
// has its own for as long as there is no monitor channel, which brings the shared block.
struct scLOGTAPInfoAppLocal
{
    std::atomic<std::int32_t> depth = 0; // as counted; what a line uses of it is kept within bounds
    std::atomic<std::uint32_t> counter = 0;
};

class clsDebugChannels final : private DebugLineSink
{
public:
    explicit clsDebugChannels(DebugTimeSource::Counter counter) : _timeSource(counter) {}
    clsDebugChannels() = default;
    clsDebugChannels(const clsDebugChannels&) = delete;
    clsDebugChannels& operator=(const clsDebugChannels&) = delete;

    // Made at the first call, and there until the process ends: calls stay safe before the library's start and after
    // its end, when nobody takes lines.
    static clsDebugChannels& Instance();

    // The lines of the whole library come here as long as there is a log file or a monitor.
    void SetLogFile(const DebugLogFile& file);
    void SetMonitor(DebugMonitor* monitor);
    // Takes all sinks away, behind a last line that the function writes. Returns after a tenth of a second at the
    // latest, without the line, even if a thread that is gone held the lock.
    void Close(void (*writeLastLine)() = nullptr);

    // The attach test.
    bool IsActive() override;

    // A line with a module's tag, which may be null or empty. `indentChange` counts by its sign; a null format changes
    // the nesting and nothing else. Leaves the last error alone, and never fails.
    void Line(const wchar_t* moduleTag, int indentChange, const wchar_t* format, va_list arguments) noexcept;

    int Depth() const { return _pLOGTAPInfoAppLocal->depth; }

private:
    void Line(int indentChange, const wchar_t* format, va_list arguments) override
    {
        Line(nullptr, indentChange, format, arguments);
    }

    // By whom a line is wanted at present.
    struct Wanted
    {
        bool asData = false;
        bool inLogFile = false;
        bool asStampedLine = false; // by the monitor
    };

    void EnterAsSink();
    Wanted WhatIsWanted();
    bool Send(const wchar_t* moduleTag, int depth, bool changesDepth, const wchar_t* format, va_list arguments);
    void SendData(const wchar_t* moduleTag, int depth, bool changesDepth, const wchar_t* format, va_list arguments);
    void MakeLine(DebugLineText& line, const wchar_t* moduleTag, int depth, unsigned processor, const wchar_t* format,
        va_list arguments);
    void HandOut(const DebugLineText& line, bool alsoToMonitor);
    void SendText(const DebugLineText& line);

    clsCriticalSection _mainLock; // one thread may take it again
    scLOGTAPInfoAppLocal _ownInfo;
    scLOGTAPInfoAppLocal* const _pLOGTAPInfoAppLocal = &_ownInfo;
    unsigned long long _lastCheck = 0;
    DebugLogFile _logFile;
    std::atomic<bool> _hasLogFile = false; // that the attach test needs no lock
    std::atomic<int> _outputGuard = 0;
    DebugMonitor* _monitor = nullptr;
    DebugTimeSource _timeSource;
};

// A line with a tag, from an exported function.
void DebugLineTagged(const wchar_t* moduleTag, int indentChange, const wchar_t* format, va_list arguments) noexcept;

// The library's start: reads the log file setting, and writes the line that opens the process.
void StartDebugChannels();
// Its end: the line that closes the process, and then no more.
void CloseDebugChannels();

} // namespace qx
