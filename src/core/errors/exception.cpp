#include "core/errors/exception.h"

#include "core/debug_line.h"

#include <cstdarg>

namespace qx
{

clsException::clsException(const wchar_t* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    PushV(format, arguments);
    va_end(arguments);
}

void clsException::Push(const wchar_t* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    PushV(format, arguments);
    va_end(arguments);
}

void clsException::PushV(const wchar_t* format, va_list arguments)
{
    if (format == nullptr)
    {
        return;
    }
    const String message = String::VMessage(format, arguments);
    DebugLine(L"EXCEPTION(%s)", message.Text());
    _errors.Push(message);
}

} // namespace qx
