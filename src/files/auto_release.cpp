#include "files/auto_release.h"

#include "core/debug_line.h"
#include "core/debugger.h"

namespace qx
{

void ReportNullInterface()
{
    DebugLine(L"ERROR: Interface pointer is NULL, GPF will follow!");
    BreakOrTrace(50);
}

} // namespace qx
