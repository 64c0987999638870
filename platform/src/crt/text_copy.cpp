#include <wchar.h>

#include <cstdlib>

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

wchar_t* wcscat(wchar_t* target, const wchar_t* source) noexcept
{
    wcscpy(target + wcslen(target), source);
    return target;
}

wchar_t* wcsncat(wchar_t* target, const wchar_t* source, size_t count) noexcept
{
    const size_t length = wcsnlen(source, count);
    wchar_t* end = target + wcslen(target);
    wmemcpy(end, source, length);
    end[length] = 0;
    return target;
}

wchar_t* wmemset(wchar_t* target, wchar_t c, size_t count) noexcept
{
    for (size_t i = 0; i < count; ++i)
        target[i] = c;
    return target;
}

wchar_t* _wcsdup(const wchar_t* text) noexcept
{
    if (!text)
        return nullptr;
    const size_t size = wcslen(text) + 1;
    auto* copy = static_cast<wchar_t*>(std::malloc(size * sizeof(wchar_t)));
    return copy ? wmemcpy(copy, text, size) : nullptr;
}
