#include <wchar.h>

#include <cstddef>

wchar_t* wcscpy(wchar_t* target, const wchar_t* source) noexcept
{
    return wmemcpy(target, source, wcslen(source) + 1);
}

wchar_t* wcsncpy(wchar_t* target, const wchar_t* source, std::size_t count) noexcept
{
    const std::size_t length = wcsnlen(source, count);
    wmemcpy(target, source, length);
    wmemset(target + length, 0, count - length);
    return target;
}

wchar_t* wmemset(wchar_t* target, wchar_t c, std::size_t count) noexcept
{
    for (std::size_t i = 0; i < count; ++i)
        target[i] = c;
    return target;
}
