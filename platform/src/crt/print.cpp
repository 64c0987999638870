#include "formatter.h"
#include "invalid_parameter.h"

#include <wchar.h>

#include <cerrno>
#include <limits>

using namespace qxplatform;

namespace
{

int Count(const BoundedText& text)
{
    constexpr size_t greatest = std::numeric_limits<int>::max();
    return text.Length() <= greatest ? static_cast<int>(text.Length()) : -1;
}

} // namespace

int _vscwprintf(const wchar_t* format, va_list arguments)
{
    Arguments list(arguments);
    wchar_t nothing = 0;
    BoundedText text(&nothing, 0);
    Format(text, format, list);
    return Count(text);
}

int _vsnwprintf(wchar_t* target, size_t size, const wchar_t* format, va_list arguments)
{
    if (!target && size == 0)
        return _vscwprintf(format, arguments);
    Arguments list(arguments);
    BoundedText text(target, size);
    Format(text, format, list);
    if (!text.Fits())
        return -1;
    if (text.Length() < size)
        target[text.Length()] = 0;
    return Count(text);
}

int _vsnwprintf_s(wchar_t* target, size_t size, size_t count, const wchar_t* format, va_list arguments)
{
    if (!target || size == 0 || !format)
    {
        RefuseParameter(EINVAL);
        return -1;
    }
    const bool mayCut = count == _TRUNCATE || count < size;
    const size_t room = count < size ? count : size - 1;
    Arguments list(arguments);
    BoundedText text(target, room);
    Format(text, format, list);
    if (text.Fits())
    {
        target[text.Length()] = 0;
        return Count(text);
    }
    target[mayCut ? room : 0] = 0;
    if (!mayCut)
        RefuseParameter(ERANGE);
    return -1;
}

int _scwprintf(const wchar_t* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const int result = _vscwprintf(format, arguments);
    va_end(arguments);
    return result;
}

int _snwprintf(wchar_t* target, size_t size, const wchar_t* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const int result = _vsnwprintf(target, size, format, arguments);
    va_end(arguments);
    return result;
}

int _snwprintf_s(wchar_t* target, size_t size, size_t count, const wchar_t* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const int result = _vsnwprintf_s(target, size, count, format, arguments);
    va_end(arguments);
    return result;
}
