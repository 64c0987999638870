#include "text_block.h"

#include <wchar.h>

#include <limits>

using namespace qxplatform;

namespace
{

constexpr std::size_t kWholeText = std::numeric_limits<std::size_t>::max();

struct Exact
{
    static wchar_t Of(wchar_t c) { return c; }
    static TextBlock Of(TextBlock block) { return block; }
};

struct WithoutCase
{
    static wchar_t Of(wchar_t c) { return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c + (L'a' - L'A')) : c; }
    static TextBlock Of(TextBlock block) { return block.Folded(); }
};

// Compares two terminated texts by their characters as mapped by `Form`, up to `limit` characters.
template <class Form>
int Compare(const wchar_t* a, const wchar_t* b, std::size_t limit)
{
    while (limit != 0)
    {
        if (kReadsWholeBlocks && limit >= kBlockLength && FitsInPage(a) && FitsInPage(b))
        {
            const TextBlock blockA(a), blockB(b);
            const BlockLanes same = Form::Of(blockA).WhereSame(Form::Of(blockB));
            const unsigned stop = same.Without(blockA.Where(0)).Mask() ^ BlockLanes::kAll;
            if (stop == 0)
            {
                a += kBlockLength;
                b += kBlockLength;
                limit -= kBlockLength;
                continue;
            }
            const std::size_t index = BlockLanes::First(stop);
            return Form::Of(a[index]) - Form::Of(b[index]);
        }
        const int difference = Form::Of(*a) - Form::Of(*b);
        if (difference != 0 || *a == 0)
            return difference;
        ++a;
        ++b;
        --limit;
    }
    return 0;
}

} // namespace

int wcscmp(const wchar_t* a, const wchar_t* b) noexcept
{
    return Compare<Exact>(a, b, kWholeText);
}

int wcsncmp(const wchar_t* a, const wchar_t* b, std::size_t count) noexcept
{
    return Compare<Exact>(a, b, count);
}

int _wcsicmp(const wchar_t* a, const wchar_t* b) noexcept
{
    return Compare<WithoutCase>(a, b, kWholeText);
}

int _wcsnicmp(const wchar_t* a, const wchar_t* b, std::size_t count) noexcept
{
    return Compare<WithoutCase>(a, b, count);
}

int wmemcmp(const wchar_t* a, const wchar_t* b, std::size_t count) noexcept
{
    for (; count >= kBlockLength; a += kBlockLength, b += kBlockLength, count -= kBlockLength)
        if (const unsigned different = TextBlock(a).WhereSame(TextBlock(b)).Mask() ^ BlockLanes::kAll)
        {
            const std::size_t index = BlockLanes::First(different);
            return a[index] - b[index];
        }
    for (; count != 0; ++a, ++b, --count)
        if (*a != *b)
            return *a - *b;
    return 0;
}
