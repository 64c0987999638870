#include <wctype.h>

wint_t towlower(wint_t c) noexcept
{
    return c >= L'A' && c <= L'Z' ? c + (L'a' - L'A') : c;
}

wint_t towupper(wint_t c) noexcept
{
    return c >= L'a' && c <= L'z' ? c - (L'a' - L'A') : c;
}

int iswspace(wint_t c) noexcept
{
    if (c <= 0xff)
        return c == L' ' || (c >= L'\t' && c <= L'\r') || c == 0xa0;
    return (c >= 0x2000 && c <= 0x200a) || c == 0x1680 || c == 0x2028 || c == 0x2029 || c == 0x202f || c == 0x205f ||
           c == 0x3000;
}
