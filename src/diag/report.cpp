#include "diag/report.h"

#include "core/critical_section.h"
#include "core/forever.h"
#include "core/text/text_format.h"

#include <new>

namespace qx
{
namespace
{

constexpr std::size_t kLineCapacity = 1025;

// Returns the lock that each line takes and that each block holds until it is closed.
clsCriticalSection& ReportLock()
{
    static clsCriticalSection& lock = MakeForever<clsCriticalSection>();
    return lock;
}

int reportDepth = 0;
wchar_t reportText[kLineCapacity]; // static, because a heap may report with little stack left

// Writes a line. If memory runs out, the line is lost, but the reporting operation continues.
void WriteReportLine(const wchar_t* format, va_list arguments)
{
    try
    {
        FormatBounded(reportText, kLineCapacity, format, arguments);
        DebugLine(L"%-8s:%*s%s\n", L"", reportDepth, L"", static_cast<const wchar_t*>(reportText));
    }
    catch (const std::bad_alloc&)
    {
        return;
    }
}

} // namespace

void ReportLine(const wchar_t* format, ...)
{
    if (!UtilIsDebugActive())
        return;
    const clsCriticalSectionLock lock(ReportLock());
    va_list arguments;
    va_start(arguments, format);
    WriteReportLine(format, arguments);
    va_end(arguments);
}

ReportBlock::ReportBlock(const wchar_t* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    OpenV(format, arguments);
    va_end(arguments);
}

ReportBlock::~ReportBlock()
{
    if (!_isOpen)
        return;
    --reportDepth;
    ReportLock().Leave();
}

void ReportBlock::Open(const wchar_t* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    OpenV(format, arguments);
    va_end(arguments);
}

void ReportBlock::OpenV(const wchar_t* format, va_list arguments)
{
    if (_isOpen || !UtilIsDebugActive())
        return;
    ReportLock().Enter();
    WriteReportLine(format, arguments);
    ++reportDepth;
    _isOpen = true;
}

} // namespace qx
