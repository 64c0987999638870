#include "text_block.h"

#include <wchar.h>

#include <limits>

using namespace qxplatform;

namespace
{

// The search conditions: one character, or one character or the terminator.
struct Is
{
    wchar_t c;
    bool operator()(wchar_t unit) const { return unit == c; }
    BlockLanes operator()(TextBlock block) const { return block.Where(c); }
};

struct IsOrEnds
{
    wchar_t c;
    bool operator()(wchar_t unit) const { return unit == c || unit == 0; }
    BlockLanes operator()(TextBlock block) const { return block.Where(c) | block.Where(0); }
};

template <class Test>
bool FoundInLine(const wchar_t* line, Test test)
{
    const BlockLanes first = test(TextBlock(line)) | test(TextBlock(line + kBlockLength));
    const BlockLanes second = test(TextBlock(line + 2 * kBlockLength)) | test(TextBlock(line + 3 * kBlockLength));
    return (first | second).Mask() != 0;
}

// Returns the index of the first character that satisfies the test, or a number of at least `limit`. The characters
// after the match are not examined: the limit may exceed the size of the text.
template <class Test>
inline std::size_t Find(const wchar_t* text, std::size_t limit, Test test)
{
    std::size_t index = 0;
    if constexpr (!kReadsWholeBlocks)
    {
        while (index < limit && !test(text[index]))
            ++index;
        return index;
    }
    if (limit == 0)
        return 0;
    const wchar_t* const start = BlockStart(text);
    if (const unsigned found = test(TextBlock(start)).Mask() >> ((text - start) * 2))
        return BlockLanes::First(found);
    index = kBlockLength - static_cast<std::size_t>(text - start);
    while (index < limit)
    {
        if (IsLineStart(text + index) && !FoundInLine(text + index, test))
        {
            index += kLineLength;
            continue;
        }
        if (const unsigned found = test(TextBlock(text + index)).Mask())
            return index + BlockLanes::First(found);
        index += kBlockLength;
    }
    return limit;
}

constexpr std::size_t kNoLimit = std::numeric_limits<std::size_t>::max();

// Returns the first character of a terminated text that is `c` or the terminator.
const wchar_t* FindOrEnd(const wchar_t* text, wchar_t c)
{
    return text + Find(text, kNoLimit, IsOrEnds{c});
}

bool Contains(const wchar_t* set, wchar_t c)
{
    return c != 0 && *FindOrEnd(set, c) == c;
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

std::size_t wcslen(const wchar_t* text) noexcept
{
    return Find(text, kNoLimit, Is{0});
}

std::size_t wcsnlen(const wchar_t* text, std::size_t limit) noexcept
{
    const std::size_t index = Find(text, limit, Is{0});
    return index < limit ? index : limit;
}

const wchar_t* wcschr(const wchar_t* text, wchar_t c) noexcept
{
    const wchar_t* found = FindOrEnd(text, c);
    return *found == c ? found : nullptr;
}

const wchar_t* wcsrchr(const wchar_t* text, wchar_t c) noexcept
{
    for (std::size_t count = wcslen(text) + 1; count != 0; --count)
        if (text[count - 1] == c)
            return text + count - 1;
    return nullptr;
}

const wchar_t* wmemchr(const wchar_t* text, wchar_t c, std::size_t count) noexcept
{
    const std::size_t index = Find(text, count, Is{c});
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

std::size_t wcsspn(const wchar_t* text, const wchar_t* accepted) noexcept
{
    const wchar_t* end = text;
    while (*end != 0 && Contains(accepted, *end))
        ++end;
    return static_cast<std::size_t>(end - text);
}
