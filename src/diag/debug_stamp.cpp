#include "diag/debug_stamp.h"

#include "core/registry/registry.h"
#include "core/text/string.h"
#include "module/late_libraries.h"

namespace qx
{
namespace
{

constexpr unsigned kProcessorsOfGroup = 64;
constexpr unsigned kUnknownProcessor = 1;

} // namespace

// Ignores the type of the value. Only the first character of the stored data matters.
bool IsCounterForced()
{
    wchar_t value[64] = {};
    DWORD bytes = sizeof value;
    HKEY key = nullptr;
    const HKEY root = UtilGetUserRootKey(true);
    bool isRead = false;
    if (RegOpenKeyExW(root, L"SOFTWARE\\trelmo", 0, KEY_READ, &key) == ERROR_SUCCESS)
    {
        isRead = RegQueryValueExW(key, L"ForceUsePerfCounters", nullptr, nullptr, reinterpret_cast<BYTE*>(value),
                     &bytes) == ERROR_SUCCESS;
        RegCloseKey(key);
    }
    CloseUserRootKey(root);
    return isRead && value[0] != L'F' && value[0] != L'0';
}

bool DebugTimeSource::UsesCounter()
{
    const clsCriticalSectionLock lock(_lock);
    if (!_isDecided)
        Decide();
    _isDecided = true;
    return _usesCounter;
}

void DebugTimeSource::Decide()
{
    LARGE_INTEGER now = {};
    LARGE_INTEGER frequency = {};
    if (!_counter.read(&now) || !IsCounterForced() || !_counter.readFrequency(&frequency) || frequency.QuadPart <= 0)
        return;
    _frequency = frequency.QuadPart;
    _counter.read(&now);
    _base = now.QuadPart;
    _usesCounter = true;
}

long long DebugTimeSource::Elapsed() const
{
    LARGE_INTEGER now = {};
    _counter.read(&now);
    return (now.QuadPart - _base) * 1000 / _frequency;
}

scDebugStamp MakeDebugStamp(DebugTimeSource& source, unsigned processor, unsigned counter)
{
    scDebugStamp stamp;
    stamp.usesCounter = source.UsesCounter();
    if (stamp.usesCounter)
        stamp.elapsed = source.Elapsed();
    else
        GetLocalTime(&stamp.time);
    stamp.thread = GetCurrentThreadId();
    stamp.processor = processor;
    stamp.counter = counter;
    return stamp;
}

void AppendStamp(DebugLineText& line, const scDebugStamp& stamp, std::wstring_view section, int depth)
{
    const String name(section); // doesn't allocate if empty
    const int width = (section.empty() ? 0 : 1) + depth;
    const int digit = L'0' + static_cast<int>(stamp.counter % 10);
    if (stamp.usesCounter)
    {
        const auto elapsed = static_cast<unsigned>(stamp.elapsed);
        line.Append(L"%02u:%02u.%03u %08x/%02x %c %s%*s", elapsed / 60'000 % 60, elapsed / 1'000 % 60, elapsed % 1'000,
            stamp.thread, stamp.processor, digit, name.Text(), width, L"");
        return;
    }
    const SYSTEMTIME& time = stamp.time;
    line.Append(L"%02u:%02u:%02u.%03u %08x/%02x %c %s%*s", unsigned{time.wHour}, unsigned{time.wMinute},
        unsigned{time.wSecond}, unsigned{time.wMilliseconds}, stamp.thread, stamp.processor, digit, name.Text(), width,
        L"");
}

unsigned CurrentProcessor()
{
    if (clsKernel32& kernel = Kernel32(); kernel.p_GetCurrentProcessorNumberEx.IsThere())
    {
        PROCESSOR_NUMBER processor = {};
        kernel.p_GetCurrentProcessorNumberEx(&processor);
        return processor.Group * kProcessorsOfGroup + processor.Number;
    }
    else if (kernel.p_GetCurrentProcessorNumber.IsThere())
        return kernel.p_GetCurrentProcessorNumber();
    return kUnknownProcessor;
}

} // namespace qx
