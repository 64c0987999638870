// Links. What is looked for is the first match of
//
//     ^(.*)<a\s+(.*)href="(.*)"(.*)>(.*)</a>(.*)$        ungreedy, without case, dots taking line ends too
//
// again and again in what follows the last one. Each part is the shortest, so the next place of each delimiter decides,
// and where one is missing behind the first link, it is missing behind all: one walk finds what the pattern would.
#include "markup/html_to_text.h"

#include <wchar.h>

#include <algorithm>
#include <string_view>
#include <vector>

namespace qx
{
namespace
{

struct Anchor
{
    const wchar_t* start;
    std::wstring_view target;
    std::wstring_view text;
    const wchar_t* end;
};

constexpr wchar_t AsciiLower(wchar_t c)
{
    return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c + 32) : c;
}

bool EqualWithoutCase(std::wstring_view a, std::wstring_view b)
{
    return std::equal(
        a.begin(), a.end(), b.begin(), b.end(), [](wchar_t x, wchar_t y) { return AsciiLower(x) == AsciiLower(y); });
}

constexpr bool IsPatternSpace(wchar_t c)
{
    return c == L' ' || (c >= L'\t' && c <= L'\r');
}

const wchar_t* FindUnit(const wchar_t* from, const wchar_t* end, wchar_t unit)
{
    return wmemchr(from, unit, static_cast<std::size_t>(end - from));
}

// Finds a lower-case text without regard to case; `last` is its last unit, which has no case.
const wchar_t* FindBehind(const wchar_t* from, const wchar_t* end, std::wstring_view text)
{
    const auto length = static_cast<std::ptrdiff_t>(text.size());
    if (end - from < length)
        return nullptr;
    for (const wchar_t* last = from + length - 1; (last = FindUnit(last, end, text.back())) != nullptr; ++last)
        if (EqualWithoutCase({last - length + 1, text.size()}, text))
            return last + 1;
    return nullptr;
}

const wchar_t* FindAnchorStart(const wchar_t* from, const wchar_t* end)
{
    for (; (from = FindUnit(from, end, L'<')) != nullptr; ++from)
        if (end - from >= 3 && AsciiLower(from[1]) == L'a' && IsPatternSpace(from[2]))
            return from;
    return nullptr;
}

bool FindAnchor(const wchar_t* from, const wchar_t* end, Anchor& anchor)
{
    constexpr std::wstring_view kHrefPart = L"href=\"", kEndTag = L"</a>";
    const wchar_t* start = FindAnchorStart(from, end);
    const wchar_t* target = start ? FindBehind(start + 3, end, kHrefPart) : nullptr;
    const wchar_t* targetEnd = target ? FindUnit(target, end, L'"') : nullptr;
    const wchar_t* tagEnd = targetEnd ? FindUnit(targetEnd + 1, end, L'>') : nullptr;
    const wchar_t* anchorEnd = tagEnd ? FindBehind(tagEnd + 1, end, kEndTag) : nullptr;
    if (!anchorEnd)
        return false;
    const wchar_t* text = tagEnd + 1;
    anchor.start = start;
    anchor.target = {target, static_cast<std::size_t>(targetEnd - target)};
    anchor.text = {text, static_cast<std::size_t>(anchorEnd - text) - kEndTag.size()};
    anchor.end = anchorEnd;
    return true;
}

} // namespace

std::size_t ExpandAnchors(wchar_t* html, std::size_t length)
{
    const wchar_t* rest = html;
    const wchar_t* end = html + length;
    wchar_t* out = html;
    std::vector<wchar_t> target; // stands in front of the text, so writing the text may run over it
    for (Anchor anchor; FindAnchor(rest, end, anchor);)
    {
        out = std::copy(rest, anchor.start, out);
        target.assign(anchor.target.begin(), anchor.target.end());
        if (EqualWithoutCase(anchor.text, anchor.target))
            out = std::copy(target.begin(), target.end(), out);
        else
        {
            out = std::copy(anchor.text.begin(), anchor.text.end(), out);
            *out++ = L' ';
            *out++ = L'[';
            out = std::copy(target.begin(), target.end(), out);
            *out++ = L']';
        }
        rest = anchor.end;
        // `$` holds in front of a final line feed too, and what stands behind it is in no group.
        if (rest != end && end[-1] == L'\n')
            --end;
    }
    out = std::copy(rest, end, out);
    *out = 0;
    return static_cast<std::size_t>(out - html);
}

} // namespace qx
