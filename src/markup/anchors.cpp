// Expands links. The result is the same as searching repeatedly, each time in the text after the previous match, for
//
//     ^(.*)<a\s+(.*)href="(.*)"(.*)>(.*)</a>(.*)$        ungreedy, caseless, dots match line ends
//
// Each part is as short as possible, so the next occurrence of each delimiter determines the match. A delimiter that is
// missing after one link is also missing after all later links. A single pass therefore finds what the pattern would
// find.
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

// Returns the position after the first occurrence of a lower-case text, ignoring case, or null. The last character of
// `text` must not be a letter.
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
    std::vector<wchar_t>
        target; // a copy, because the text is written first and may overwrite the target, which precedes it
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
        // `$` also matches before a final line feed. That line feed is in no group and is dropped.
        if (rest != end && end[-1] == L'\n')
            --end;
    }
    out = std::copy(rest, end, out);
    *out = 0;
    return static_cast<std::size_t>(out - html);
}

} // namespace qx
