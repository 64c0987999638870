#include "diag/debug_channels.h"

#include "core/counted_entry.h"
#include "core/forever.h"
#include "core/system_values.h"
#include "core/thread_names.h"
#include "core/ticks.h"
#include "module/module_description.h"
#include "module/module_paths.h"

#include <windows.h>

#include <wchar.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <memory>
#include <string_view>

namespace qx
{
namespace
{

constexpr int kMaxDepth = 50;
constexpr wchar_t kSectionMark = L'\u25A0';
constexpr std::size_t kBytesPerCharacter = 6; // in any code page
constexpr unsigned kClosePatience = 100;      // ms

// Restores the last error and errno, so that tracing doesn't change the behaviour of the traced program.
class ErrorsKept
{
public:
    ErrorsKept() = default;
    ErrorsKept(const ErrorsKept&) = delete;
    ErrorsKept& operator=(const ErrorsKept&) = delete;
    ~ErrorsKept()
    {
        errno = _code;
        SetLastError(_lastError);
    }

private:
    const DWORD _lastError = GetLastError();
    const int _code = errno;
};

const char* OwnThreadName()
{
    return TheThreadNames().Find(GetCurrentThreadId());
}

void AppendThreadName(DebugLineText& line)
{
    if (const char* const name = OwnThreadName())
        line.Append(L"[%hs] ", name);
}

struct FreeGlobal
{
    void operator()(void* block) const { GlobalFree(block); }
};

// Waits only for a limited time: at the end of a process the system may have terminated a thread that held the lock.
bool EnterWithin(clsCriticalSection& lock, unsigned milliseconds)
{
    const unsigned long long limit = UtilGetTicks() + milliseconds;
    while (!lock.TryEnter())
    {
        if (UtilGetTicks() >= limit)
            return false;
        Sleep(0);
    }
    return true;
}

} // namespace

clsDebugChannels& clsDebugChannels::Instance()
{
    static clsDebugChannels& channels = MakeForever<clsDebugChannels>();
    return channels;
}

void clsDebugChannels::EnterAsSink()
{
    _hasLogFile = _logFile.IsSet();
    if (_logFile.IsSet() || _monitor != nullptr)
        SetDebugLineSink(this);
    else
    {
        DebugLineSink* own = this;
        debugLineSink.compare_exchange_strong(own, nullptr); // don't remove a sink set by others
    }
}

void clsDebugChannels::SetLogFile(const DebugLogFile& file)
{
    const clsCriticalSectionLock lock(_mainLock);
    _logFile = file;
    EnterAsSink();
}

void clsDebugChannels::SetMonitor(DebugMonitor* monitor)
{
    const clsCriticalSectionLock lock(_mainLock);
    _monitor = monitor;
    _lastCheck = 0;
    EnterAsSink();
}

void clsDebugChannels::Close(void (*writeLastLine)())
{
    const bool isEntered = EnterWithin(_mainLock, kClosePatience);
    if (isEntered && writeLastLine != nullptr)
        writeLastLine();
    _hasLogFile = false;
    DebugLineSink* own = this;
    debugLineSink.compare_exchange_strong(own, nullptr);
    if (!isEntered)
        return;
    _logFile = DebugLogFile();
    _monitor = nullptr;
    _mainLock.Leave();
}

bool clsDebugChannels::IsActive()
{
    if (_hasLogFile.load(std::memory_order_relaxed))
        return true;
    const clsCriticalSectionLock lock(_mainLock);
    if (_monitor == nullptr)
        return false;
    if (const unsigned long long now = UtilGetTicks(); now >= _lastCheck)
    {
        _monitor->Search();
        _lastCheck = now;
    }
    return _monitor->IsRecording();
}

void clsDebugChannels::Line(
    const wchar_t* moduleTag, int indentChange, const wchar_t* format, va_list arguments) noexcept
{
    const ErrorsKept errors;
    std::atomic<std::int32_t>& stored = _pLOGTAPInfoAppLocal->depth;
    const std::int32_t depth = indentChange < 0 ? stored.fetch_sub(1) - 1 : stored.load();
    bool isCounted = true;
    if (format != nullptr)
    {
        try
        {
            isCounted = Send(moduleTag, std::clamp(depth, 0, kMaxDepth), indentChange != 0, format, arguments);
        }
        catch (...)
        {
            // The line is lost, but the nesting must be updated.
        }
    }
    if (isCounted && indentChange > 0)
        ++stored;
}

// The log file receives every line, regardless of the monitor's state.
clsDebugChannels::Wanted clsDebugChannels::WhatIsWanted()
{
    const clsCriticalSectionLock lock(_mainLock);
    if (!IsActive())
        return {};
    const bool isData = _monitor != nullptr && _monitor->IsDataOpen();
    return {isData && _monitor->IsRecording(), _logFile.IsSet(), !isData};
}

// Returns false if lines are no longer wanted. The nesting doesn't change in this case.
bool clsDebugChannels::Send(
    const wchar_t* moduleTag, int depth, bool changesDepth, const wchar_t* format, va_list arguments)
{
    const Wanted wanted = WhatIsWanted();
    if (wanted.asData)
    {
        va_list copy;
        va_copy(copy, arguments);
        SendData(moduleTag, depth, changesDepth, format, copy);
        va_end(copy);
    }
    if (!wanted.inLogFile && !wanted.asStampedLine)
        return wanted.asData;

    const unsigned processor = CurrentProcessor(); // outside the lock, because it may take another lock
    const clsCriticalSectionLock lock(_mainLock);
    if (!IsActive())
        return false;
    DebugLineText line;
    MakeLine(line, moduleTag, depth, processor, format, arguments);
    HandOut(line, wanted.asStampedLine);
    return true;
}

// Sends time, thread and depth separately from the text. Formats the text without the lock, which is held only while
// the line is sent.
void clsDebugChannels::SendData(
    const wchar_t* moduleTag, int depth, bool changesDepth, const wchar_t* format, va_list arguments)
{
    DebugLineText line;
    AppendThreadName(line);
    line.AppendV(format, arguments);
    const clsCriticalSectionLock lock(_mainLock);
    if (_monitor != nullptr && (line.Length() != 0 || !changesDepth))
        _monitor->SendData(moduleTag, 1, 0, depth, line.Text(), line.Length());
}

void clsDebugChannels::MakeLine(DebugLineText& line, const wchar_t* moduleTag, int depth, unsigned processor,
    const wchar_t* format, va_list arguments)
{
    std::wstring_view section;
    if (const wchar_t* const mark = wcschr(format, kSectionMark))
    {
        section = {format, static_cast<std::size_t>(mark - format)};
        format = mark + 1;
    }
    if (moduleTag != nullptr && *moduleTag != 0)
        line.Append(L"%-8s: ", moduleTag);
    AppendStamp(line, MakeDebugStamp(_timeSource, processor, _pLOGTAPInfoAppLocal->counter++), section, depth);
    AppendThreadName(line);
    line.AppendV(format, arguments);
}

// Drops lines that are written while another line is being output by the same call chain.
void clsDebugChannels::HandOut(const DebugLineText& line, bool alsoToMonitor)
{
    const CountedEntry entry(_outputGuard);
    if (!entry.IsFirst())
        return;
    if (_logFile.IsSet())
        _logFile.Append(line.Text(), line.Length());
    if (!alsoToMonitor || _monitor == nullptr)
        return;
    if (_monitor->HasData())
        _monitor->SendData(nullptr, 1, 0, 0, line.Text(), line.Length());
    else
        SendText(line);
}

void clsDebugChannels::SendText(const DebugLineText& line)
{
    const std::size_t size = kBytesPerCharacter * (line.Length() + 1);
    const std::unique_ptr<void, FreeGlobal> block(GlobalAlloc(GMEM_FIXED | GMEM_ZEROINIT, size));
    auto* const bytes = static_cast<char*>(block.get());
    if (bytes == nullptr ||
        WideCharToMultiByte(_monitor->CodePage(), 0, line.Text(), static_cast<int>(line.Length()) + 1, bytes,
            static_cast<int>(size), nullptr, nullptr) == 0)
    {
        OutputDebugStringW(L"ERR converting LOGTAP output");
        return;
    }
    _monitor->SendText(bytes);
}

void DebugLineTagged(const wchar_t* moduleTag, int indentChange, const wchar_t* format, va_list arguments) noexcept
{
    clsDebugChannels::Instance().Line(moduleTag, indentChange, format, arguments);
}

namespace
{

// Returns true for the installation repair program, which writes no lines about its start and end.
bool IsQuietProcess(std::size_t comparedCharacters)
{
    return _wcsnicmp(ProcessPaths().file.Text(), L"resmender", comparedCharacters) == 0;
}

void WriteClosingLine()
{
    try
    {
        if (UtilIsDebugActive() && !IsQuietProcess(8))
            DebugLine(L"--%s [%s]", GetModuleDescription(LibraryHandle()).Text(), ProcessPaths().path.Text());
    }
    catch (...)
    {
        // Out of memory: skip the line.
    }
}

} // namespace

void StartDebugChannels()
{
    clsDebugChannels::Instance().SetLogFile(DebugLogFile::FromSettings());
    if (!UtilIsDebugActive() || IsQuietProcess(9))
        return;
    const String description = GetModuleDescription(LibraryHandle());
    if (LibraryPaths().path != ProcessPaths().path)
        DebugLine(L"++%s [%s] [%s]", description.Text(), ProcessPaths().path.Text(), LibraryPaths().directory.Text());
    else
        DebugLine(L"++%s [%s]", description.Text(), ProcessPaths().path.Text());
}

void CloseDebugChannels()
{
    clsDebugChannels::Instance().Close(&WriteClosingLine);
}

} // namespace qx
