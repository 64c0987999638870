#include <string.h>

namespace
{

int Folded(char c)
{
    const auto unit = static_cast<unsigned char>(c);
    return unit >= 'A' && unit <= 'Z' ? unit + ('a' - 'A') : unit;
}

} // namespace

int _strnicmp(const char* a, const char* b, size_t count) noexcept
{
    for (; count != 0; ++a, ++b, --count)
    {
        const int difference = Folded(*a) - Folded(*b);
        if (difference != 0 || *a == 0)
            return difference;
    }
    return 0;
}

int _stricmp(const char* a, const char* b) noexcept
{
    return _strnicmp(a, b, static_cast<size_t>(-1));
}
