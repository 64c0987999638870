#include "docinfo/text_scan.h"

#include "core/text/text_buffer.h"

#include <algorithm>

namespace qx
{

bool StandsAt(std::wstring_view text, std::size_t position, std::wstring_view literal)
{
    return position <= text.size() && literal.size() <= text.size() - position &&
           std::equal(literal.begin(), literal.end(), text.begin() + static_cast<std::ptrdiff_t>(position),
               [](wchar_t a, wchar_t b) { return a == LowerASCII(b); });
}

std::size_t FindIgnoringCase(std::wstring_view text, std::wstring_view literal, std::size_t from)
{
    for (std::size_t at = text.find(literal[0], from); at != kNotFound; at = text.find(literal[0], at + 1))
        if (StandsAt(text, at, literal))
            return at;
    return kNotFound;
}

std::size_t SkipSpace(std::wstring_view text, std::size_t from)
{
    while (from < text.size() && IsSpaceASCII(text[from]))
        ++from;
    return from;
}

void RemoveAll(TextBuffer& text, std::wstring_view piece, std::size_t from)
{
    std::size_t source = text.find(piece, from);
    if (source == kNotFound)
        return;
    std::size_t target = source;
    while (source != kNotFound)
    {
        source += piece.size();
        const std::size_t next = text.find(piece, source);
        const std::size_t end = next != kNotFound ? next : text.size();
        std::copy(text.begin() + static_cast<std::ptrdiff_t>(source), text.begin() + static_cast<std::ptrdiff_t>(end),
            text.begin() + static_cast<std::ptrdiff_t>(target));
        target += end - source;
        source = next;
    }
    text.resize(target);
}

std::uint32_t DecimalNumber(std::wstring_view digits)
{
    std::uint64_t value = 0;
    for (const wchar_t digit : digits)
        value = std::min<std::uint64_t>(value * 10 + static_cast<std::uint64_t>(digit - L'0'), INT32_MAX);
    return static_cast<std::uint32_t>(value);
}

void RemoveLineEnds(TextBuffer& text)
{
    std::erase_if(text, [](wchar_t c) { return c == L'\r' || c == L'\n'; });
}

} // namespace qx
