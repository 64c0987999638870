#include <wchar.h>

wchar_t* wcscpy(wchar_t* target, const wchar_t* source) noexcept
{
    return wmemcpy(target, source, wcslen(source) + 1);
}

wchar_t* wcsncpy(wchar_t* target, const wchar_t* source, size_t count) noexcept
{
    const size_t length = wcsnlen(source, count);
    wmemcpy(target, source, length);
    wmemset(target + length, 0, count - length);
    return target;
}

wchar_t* wmemset(wchar_t* target, wchar_t c, size_t count) noexcept
{
    for (size_t i = 0; i < count; ++i)
        target[i] = c;
    return target;
}
