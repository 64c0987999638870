#include "core/debug_line.h"

namespace qx
{

void WriteDebugLine(int indentChange, const wchar_t* format, ...)
{
    DebugLineSink* const sink = debugLineSink.load(std::memory_order_acquire);
    if (!sink)
        return;
    va_list arguments;
    va_start(arguments, format);
    sink->Line(indentChange, format, arguments);
    va_end(arguments);
}

} // namespace qx
