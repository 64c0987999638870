#include "markup/html_to_text.h"

#include "markup/html_mask.h"

#include <wchar.h>

#include <algorithm>

namespace qx
{
namespace
{

std::size_t Terminate(wchar_t* text, const wchar_t* end)
{
    const auto length = static_cast<std::size_t>(end - text);
    text[length] = 0;
    return length;
}

std::size_t JoinLineEnds(wchar_t* text, std::size_t length)
{
    const wchar_t* const end = text + length;
    wchar_t* out = text;
    for (const wchar_t* in = text; in != end; ++in)
        if (*in != L'\n' || in == text || in[-1] != L'\r')
            *out++ = *in;
    return Terminate(text, out);
}

// Returns the remaining length of a run of carriage returns after each three are replaced by two, and then each four by
// two.
std::size_t ReturnsLeft(std::size_t count)
{
    const std::size_t first = count / 3 * 2 + count % 3;
    return first / 4 * 2 + first % 4;
}

std::size_t FoldBlankLines(wchar_t* text, std::size_t length)
{
    const wchar_t* const end = text + length;
    const wchar_t* in = text;
    wchar_t* out = text;
    while (in != end)
    {
        const wchar_t* const run = std::find(in, end, L'\r');
        out = std::copy(in, run, out);
        in = std::find_if(run, end, [](wchar_t c) { return c != L'\r'; });
        out = std::fill_n(out, ReturnsLeft(static_cast<std::size_t>(in - run)), L'\r');
    }
    return Terminate(text, out);
}

} // namespace

// Removes up to the last "-->", not the first one, so text between two comments is removed as well.
std::size_t RemoveComments(wchar_t* html, std::size_t length)
{
    constexpr std::wstring_view kOpening = L"<!--", kClosing = L"-->";
    const std::wstring_view text(html, length);
    const std::size_t start = text.find(kOpening);
    if (start == std::wstring_view::npos)
        return length;
    const std::size_t end = text.rfind(kClosing);
    if (end == std::wstring_view::npos || end < start + kOpening.size())
        return length;
    return Terminate(html, std::copy(html + end + kClosing.size(), html + length, html + start));
}

std::size_t FoldBlanks(wchar_t* text, std::size_t length)
{
    constexpr wchar_t kLeftGuillemet = 0xAB, kRightGuillemet = 0xBB, kNoBreakSpace = 0xA0;
    const wchar_t* const end = text + length;
    wchar_t* out = text;
    bool space = false;
    std::ptrdiff_t depth = 0;
    for (const wchar_t* in = text; in != end; ++in)
    {
        const wchar_t c = *in;
        bool keep = true;
        bool isSpace = false;
        switch (c)
        {
        case L' ':
        case kNoBreakSpace:
            keep = !space;
            isSpace = true;
            break;
        case L'\n':
            keep = false;
            isSpace = space;
            break;
        case kLeftGuillemet:
            keep = depth++ != 0;
            isSpace = keep && space; // an outermost guillemet ends a run of blanks, an inner one doesn't
            break;
        case kRightGuillemet:
            keep = depth-- != 1;
            isSpace = keep && space;
            break;
        default:
            break;
        }
        space = isSpace;
        if (keep)
            *out++ = c;
    }
    return Terminate(text, out);
}

String HtmlToText(const wchar_t* html, bool placeholders)
{
    String text(html);
    std::size_t length = text.Length();
    if (length == 0)
        return text;
    wchar_t* characters = text.GetBuffer(length + 1);
    length = RemoveComments(characters, length);
    length = JoinLineEnds(characters, length);
    length = ExpandAnchors(characters, length);
    length = RemoveTags(characters, length, placeholders);
    length = DemaskHtmlInPlace(characters, length);
    length = FoldBlanks(characters, length);
    length = FoldBlankLines(characters, length);
    text.ReleaseBuffer(length);
    return text;
}

} // namespace qx
