// The lines and blocks of reports about heaps and modules, with a nesting of their own in the whole process. Any thread
// may write a report; others wait until its blocks are closed.
#pragma once

#include "core/debug_line.h"

namespace qx
{

// Writes a line at the present depth if the debug output is active.
void ReportLine(const wchar_t* format, ...);

// A line and the lines that follow it as long as the object exists, one level deeper.
class ReportBlock
{
public:
    // Opens nothing.
    ReportBlock() = default;
    explicit ReportBlock(const wchar_t* format, ...);
    ReportBlock(const ReportBlock&) = delete;
    ReportBlock& operator=(const ReportBlock&) = delete;
    ~ReportBlock();

    // Opens the block if it isn't open and the debug output is active.
    void Open(const wchar_t* format, ...);

private:
    void OpenV(const wchar_t* format, va_list arguments);

    bool _isOpen = false;
};

} // namespace qx
