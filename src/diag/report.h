// The lines and blocks of reports about heaps and modules, with a process-wide nesting level of their own. Any thread
// may write a report; others wait until its blocks are closed.
#pragma once

#include "core/debug_line.h"

namespace qx
{

// Writes a line at the current level if the debug output is active.
void ReportLine(const wchar_t* format, ...);

// Writes a line and raises the level of the lines that follow while the object exists.
class ReportBlock
{
public:
    // Creates a closed block.
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
