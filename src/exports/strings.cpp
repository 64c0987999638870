#include "exports/guard.h"

#include "core/text/flat_text.h"
#include "core/text/text_format.h"

#include <qxut23/strings.h>

#include <windows.h>

#include <wchar.h>

#include <cstdarg>
#include <cstdint>
#include <cstring>

using namespace qx;

namespace
{

// Maps null to the empty text, which the C runtime's functions require.
const wchar_t* Readable(const wchar_t* text)
{
    return text ? text : L"";
}

} // namespace

std::size_t UtilStrlen(const QXWCHAR* text)
{
    return Guarded(0, [&] { return TextLength(text); });
}

std::uint32_t UtilSafeStrlen(const void*, const QXWCHAR* text)
{
    return Guarded(0, [&] { return static_cast<std::uint32_t>(TextLength(text)); });
}

QXWCHAR* UtilStrcpy(QXWCHAR* target, const QXWCHAR* source)
{
    Guarded([&] { CopyText(target, source); });
    return target;
}

QXWCHAR* UtilStrcat(QXWCHAR* target, const QXWCHAR* source)
{
    Guarded([&] { AppendText(target, source); });
    return target;
}

QXWCHAR* UtilStrncpy(QXWCHAR* target, const QXWCHAR* source, std::size_t size)
{
    Guarded([&] { CopyTextBounded(target, source, size); });
    return target;
}

int UtilStrcmp(const QXWCHAR* a, const QXWCHAR* b)
{
    return Guarded(0, [&] { return CompareUnits(Readable(a), Readable(b)); });
}

int UtilStricmp(const QXWCHAR* a, const QXWCHAR* b)
{
    return Guarded(0, [&] { return _wcsicmp(Readable(a), Readable(b)); });
}

int UtilStrncmp(const QXWCHAR* a, const QXWCHAR* b, std::size_t count)
{
    return Guarded(0, [&] { return wcsncmp(Readable(a), Readable(b), count); });
}

int UtilStrnicmp(const QXWCHAR* a, const QXWCHAR* b, std::size_t count)
{
    return Guarded(0, [&] { return _wcsnicmp(Readable(a), Readable(b), count); });
}

QXWCHAR* UtilStrchr(const QXWCHAR* text, QXWCHAR c)
{
    return Guarded(nullptr, [&] { return text ? const_cast<QXWCHAR*>(wcschr(text, c)) : nullptr; });
}

QXWCHAR* UtilStrrchr(const QXWCHAR* text, QXWCHAR c)
{
    return Guarded(nullptr, [&] { return text ? const_cast<QXWCHAR*>(wcsrchr(text, c)) : nullptr; });
}

QXWCHAR* UtilStrstr(const QXWCHAR* text, const QXWCHAR* part)
{
    return Guarded(nullptr,
        [&]() -> QXWCHAR*
        {
            // Not every runtime library finds an empty text in an empty one.
            if (!text || !part || !*part)
                return const_cast<QXWCHAR*>(text);
            return const_cast<QXWCHAR*>(wcsstr(text, part));
        });
}

void* UtilMemcpy(void* target, const void* source, std::size_t count)
{
    Guarded(
        [&]
        {
            if (target && source && count > 0)
                std::memcpy(target, source, count);
        });
    return target;
}

void* UtilMemset(void* target, int value, std::size_t count)
{
    Guarded(
        [&]
        {
            if (target && count > 0)
                std::memset(target, value, count);
        });
    return target;
}

QXWCHAR* UtilLtrim(QXWCHAR* text)
{
    Guarded([&] { TrimTextLeft(text); });
    return text;
}

QXWCHAR* UtilRtrim(QXWCHAR* text)
{
    Guarded([&] { TrimTextRight(text); });
    return text;
}

QXWCHAR* UtilAtrim(QXWCHAR* text)
{
    Guarded(
        [&]
        {
            TrimTextRight(text);
            TrimTextLeft(text);
        });
    return text;
}

QXWCHAR* UtilStuff(QXWCHAR* text, std::int32_t pos, std::int32_t count, const QXWCHAR* insert)
{
    Guarded([&] { ReplaceInText(text, pos, count, insert); });
    return text;
}

QXWCHAR* UtilSubstr(QXWCHAR* text, std::int32_t pos, std::int32_t count)
{
    Guarded([&] { KeepPartOfText(text, pos, count); });
    return text;
}

int UtilSafeSprintf(QXWCHAR* buffer, std::size_t size, const QXWCHAR* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const int count =
        Guarded(-1, [&] { return buffer && format ? FormatBounded(buffer, size, format, arguments) : -1; });
    va_end(arguments);
    return count;
}

int UtilIsRPtr(const void*)
{
    return 1;
}

int UtilIsString(const QXWCHAR*)
{
    return 1;
}

int UtilIsWPtr(void*)
{
    return 1;
}
