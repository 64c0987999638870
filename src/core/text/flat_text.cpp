#include "core/text/flat_text.h"

#include "core/text/characters.h"

#include <wchar.h>

#include <algorithm>

namespace qx
{

namespace
{

std::size_t ClippedCount(std::int32_t count, std::size_t available)
{
    return count < 0 ? 0 : std::min(static_cast<std::size_t>(count), available);
}

} // namespace

std::size_t TextLength(const wchar_t* text)
{
    return text ? wcslen(text) : 0;
}

int CompareUnits(const wchar_t* a, const wchar_t* b)
{
    while (*a == *b)
    {
        if (*a == 0)
            return 0;
        ++a;
        ++b;
    }
    return static_cast<unsigned short>(*a) < static_cast<unsigned short>(*b) ? -1 : 1;
}

void CopyText(wchar_t* target, const wchar_t* source)
{
    if (!target)
        return;
    const std::size_t length = TextLength(source);
    if (length > 0)
        MoveCharacters(target, source, length);
    target[length] = 0;
}

void AppendText(wchar_t* target, const wchar_t* source)
{
    if (target && source)
        CopyText(target + wcslen(target), source);
}

void CopyTextBounded(wchar_t* target, const wchar_t* source, std::size_t size)
{
    if (!target || size == 0)
        return;
    const std::size_t length = source ? wcsnlen(source, size - 1) : 0;
    if (length > 0)
        MoveCharacters(target, source, length);
    target[length] = 0;
}

void TrimTextLeft(wchar_t* text)
{
    if (!text)
        return;
    const std::size_t blanks = wcsspn(text, L" ");
    if (blanks > 0)
        CopyText(text, text + blanks);
}

void TrimTextRight(wchar_t* text)
{
    if (!text)
        return;
    std::size_t length = wcslen(text);
    while (length > 0 && text[length - 1] == L' ')
        --length;
    text[length] = 0;
}

void ReplaceInText(wchar_t* text, std::int32_t pos, std::int32_t count, const wchar_t* insert)
{
    const std::size_t length = TextLength(text);
    if (!text || pos < 1 || static_cast<std::size_t>(pos) - 1 > length)
        return;
    wchar_t* const place = text + (pos - 1);
    const std::size_t behind = length - (static_cast<std::size_t>(pos) - 1);
    const std::size_t removed = ClippedCount(count, behind);
    const std::size_t inserted = TextLength(insert);
    MoveCharacters(place + inserted, place + removed, behind - removed + 1);
    if (inserted > 0)
        MoveCharacters(place, insert, inserted);
}

void KeepPartOfText(wchar_t* text, std::int32_t pos, std::int32_t count)
{
    if (!text || count == -1)
        return;
    const auto length = static_cast<std::int64_t>(wcslen(text));
    const std::int64_t start = pos > 0 ? std::int64_t{pos} - 1 : length + pos;
    const bool outside = pos == 0 || start < 0 || start >= length;
    const std::size_t kept = outside ? 0 : ClippedCount(count, static_cast<std::size_t>(length - start));
    if (kept > 0)
        MoveCharacters(text, text + start, kept);
    text[kept] = 0;
}

} // namespace qx
