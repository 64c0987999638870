#include <qxut23/debug.h>

#include "core/debug_line.h"
#include "core/text/string.h"
#include "diag/debug_channels.h"
#include "exports/guard.h"

#include <windows.h>

#include <cstdint>

using namespace qx;

void UtilDebug(const QXWCHAR* format, ...)
{
    if (!UtilIsDebugActive())
        return;
    va_list arguments;
    va_start(arguments, format);
    DebugLineTagged(nullptr, 0, format, arguments);
    va_end(arguments);
}

void UtilDebugExt(const QXWCHAR* moduleTag, std::int32_t indentChange, const QXWCHAR* format, ...)
{
    if (!UtilIsDebugActive())
        return;
    va_list arguments;
    va_start(arguments, format);
    DebugLineTagged(moduleTag, indentChange, format, arguments);
    va_end(arguments);
}

void UtilDebugExtV(const QXWCHAR* moduleTag, std::int32_t indentChange, const QXWCHAR* format, va_list arguments)
{
    if (UtilIsDebugActive())
        DebugLineTagged(moduleTag, indentChange, format, arguments);
}

void PasDebug(const QXWCHAR* text)
{
    UtilDebug(L"%s", text);
}

// The line begins with an empty module name and ends with the system's text for the last error.
void UtilError(const QXWCHAR* where, const QXWCHAR* what)
{
    if (!UtilIsDebugActive())
        return;
    Guarded(
        [=]
        {
            const String reason = String::SystemErrorText(GetLastError());
            UtilDebug(L"\nQV32UTIL['%s']: error in '%s' (%s): %s\n", L"", where, what, reason.Text());
        });
}

std::int32_t UtilGetFlags(void)
{
    return UtilIsDebugActive() ? 1 : 0;
}
