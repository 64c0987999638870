#include "formatter.h"

#include <wchar.h>

#include <limits>

using namespace qxplatform;

namespace
{

int Count(const BoundedText& text)
{
    constexpr std::size_t kGreatest = std::numeric_limits<int>::max();
    return text.Length() <= kGreatest ? static_cast<int>(text.Length()) : -1;
}

} // namespace

int _vsnwprintf(wchar_t* target, std::size_t size, const wchar_t* format, va_list arguments)
{
    Arguments list(arguments);
    wchar_t nothing = 0;
    BoundedText text(target != nullptr ? target : &nothing, size);
    Format(text, format, list);
    if (target == nullptr && size == 0)
        return Count(text); // the length of the whole text
    if (!text.Fits())
        return -1;
    if (text.Length() < size)
        target[text.Length()] = 0;
    return Count(text);
}

int _snwprintf(wchar_t* target, std::size_t size, const wchar_t* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const int result = _vsnwprintf(target, size, format, arguments);
    va_end(arguments);
    return result;
}
