#include "core/text/string.h"

#include "core/debug_line.h"
#include "core/system_calls.h"

#include <windows.h>

#include <wchar.h>

#include <climits>
#include <memory>

namespace qx
{

namespace
{

constexpr std::size_t kMappedOnStack = 200;

int MapString(
    unsigned locale, unsigned flags, const wchar_t* source, int sourceLength, wchar_t* target, int targetLength)
{
    return locale == LOCALE_INVARIANT ? MapInvariantString(flags, source, sourceLength, target, targetLength)
                                      : LCMapStringW(locale, flags, source, sourceLength, target, targetLength);
}

} // namespace

void String::LCMapString(unsigned flags, unsigned locale)
{
    if (IsEmpty())
        return;
    const int sourceLength = _length < INT_MAX ? static_cast<int>(_length) + 1 : 0; // includes the terminator
    int result = MapString(locale, flags, Text(), sourceLength, nullptr, 0);
    if (result > 0)
    {
        const auto size = static_cast<std::size_t>(result);
        wchar_t stack[kMappedOnStack];
        std::unique_ptr<wchar_t[]> heap;
        wchar_t* target = stack;
        if (size > kMappedOnStack)
        {
            heap = std::make_unique_for_overwrite<wchar_t[]>(size);
            target = heap.get();
        }
        result = MapString(locale, flags, Text(), sourceLength, target, result);
        if (result > 0)
        {
            AssignCharacters(target, wcsnlen(target, size));
            return;
        }
    }
    const unsigned error = GetLastError();
    DebugLine(
        L"ERR: String::LCMapString[Ex](0x%x) failed: %d/%d/%d : %s! (Even if SUCCEEDED is returned, the result is "
        L"garbage)",
        locale, result, sourceLength, static_cast<int>(wcslen(Text())),
        SystemErrorText(error, LANG_USER_DEFAULT).Text());
}

void String::MakeUpper()
{
    LCMapString(LCMAP_LINGUISTIC_CASING | LCMAP_UPPERCASE, LOCALE_USER_DEFAULT);
}

void String::MakeLower()
{
    LCMapString(LCMAP_LINGUISTIC_CASING | LCMAP_LOWERCASE, LOCALE_USER_DEFAULT);
}

String String::Upper() const
{
    String upper(*this);
    upper.MakeUpper();
    return upper;
}

} // namespace qx
