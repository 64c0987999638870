#include "text_block.h"

#include <wchar.h>

using namespace qxplatform;

namespace
{

// The first character of a terminated text that is `c` or the terminator.
const wchar_t* FindOrEnd(const wchar_t* text, wchar_t c)
{
    if constexpr (!ReadsWholeBlocks)
    {
        while (*text != c && *text != 0)
            ++text;
        return text;
    }
    const wchar_t* blockStart = TextBlock::AlignDown(text);
    TextBlock block(blockStart);
    BlockMask found = (block.Where(c) | block.Where(0)) >> ((text - blockStart) * 2);
    if (found != 0)
        return text + FirstCharacter(found);
    do
    {
        blockStart += BlockLength;
        block = TextBlock(blockStart);
        found = block.Where(c) | block.Where(0);
    } while (found == 0);
    return blockStart + FirstCharacter(found);
}

// The index of the first `c`, or a number of at least `limit`. Nothing is asked of the characters behind that `c`: the
// limit may be greater than what is there.
size_t FindWithin(const wchar_t* text, wchar_t c, size_t limit)
{
    size_t index = 0;
    if constexpr (!ReadsWholeBlocks)
    {
        while (index < limit && text[index] != c)
            ++index;
        return index;
    }
    if (limit == 0)
        return 0;
    const wchar_t* blockStart = TextBlock::AlignDown(text);
    if (const BlockMask found = TextBlock(blockStart).Where(c) >> ((text - blockStart) * 2))
        return FirstCharacter(found);
    for (index = BlockLength - static_cast<size_t>(text - blockStart); index < limit; index += BlockLength)
        if (const BlockMask found = TextBlock(text + index).Where(c))
            return index + FirstCharacter(found);
    return limit;
}

bool Contains(const wchar_t* set, wchar_t c)
{
    return c != 0 && *FindOrEnd(set, c) == c;
}

size_t CountWhile(const wchar_t* text, const wchar_t* set, bool contained)
{
    const wchar_t* position = text;
    while (*position != 0 && Contains(set, *position) == contained)
        ++position;
    return static_cast<size_t>(position - text);
}

bool StartsWith(const wchar_t* text, const wchar_t* part)
{
    while (*part != 0 && *text == *part)
    {
        ++text;
        ++part;
    }
    return *part == 0;
}

} // namespace

size_t wcslen(const wchar_t* text) noexcept
{
    return static_cast<size_t>(FindOrEnd(text, 0) - text);
}

size_t wcsnlen(const wchar_t* text, size_t limit) noexcept
{
    const size_t index = FindWithin(text, 0, limit);
    return index < limit ? index : limit;
}

const wchar_t* wcschr(const wchar_t* text, wchar_t c) noexcept
{
    const wchar_t* found = FindOrEnd(text, c);
    return *found == c ? found : nullptr;
}

const wchar_t* wcsrchr(const wchar_t* text, wchar_t c) noexcept
{
    for (size_t count = wcslen(text) + 1; count != 0; --count)
        if (text[count - 1] == c)
            return text + count - 1;
    return nullptr;
}

const wchar_t* wmemchr(const wchar_t* text, wchar_t c, size_t count) noexcept
{
    const size_t index = FindWithin(text, c, count);
    return index < count ? text + index : nullptr;
}

const wchar_t* wcsstr(const wchar_t* text, const wchar_t* part) noexcept
{
    if (*part == 0)
        return text;
    for (text = FindOrEnd(text, *part); *text != 0; text = FindOrEnd(text + 1, *part))
        if (StartsWith(text + 1, part + 1))
            return text;
    return nullptr;
}

size_t wcsspn(const wchar_t* text, const wchar_t* accepted) noexcept
{
    return CountWhile(text, accepted, true);
}

size_t wcscspn(const wchar_t* text, const wchar_t* rejected) noexcept
{
    return CountWhile(text, rejected, false);
}

const wchar_t* wcspbrk(const wchar_t* text, const wchar_t* wanted) noexcept
{
    text += wcscspn(text, wanted);
    return *text != 0 ? text : nullptr;
}

wchar_t* wcstok(wchar_t* text, const wchar_t* separators, wchar_t** next) noexcept
{
    if (!text)
        text = *next;
    if (!text)
        return nullptr;
    text += wcsspn(text, separators);
    if (*text == 0)
    {
        *next = nullptr;
        return nullptr;
    }
    wchar_t* end = wcspbrk(text, separators);
    *next = end ? end + 1 : nullptr;
    if (end)
        *end = 0;
    return text;
}
