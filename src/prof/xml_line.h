// Parsing of the tags in a line, for both XML forms.
#pragma once

#include "prof/mask.h"

#include <cstddef>
#include <string_view>

namespace qx
{

// The part of a line that hasn't been parsed yet. Zero-terminated and writable.
struct scXmlText
{
    wchar_t* begin;
    wchar_t* end;

    bool IsEmpty() const { return begin == end; }
    std::wstring_view View() const { return {begin, static_cast<std::size_t>(end - begin)}; }
    wchar_t* Find(std::wstring_view what) const
    {
        const std::size_t at = View().find(what);
        return at == std::wstring_view::npos ? nullptr : begin + at;
    }

    void SkipBlanks()
    {
        while (*begin == L' ' || *begin == L'\t')
            ++begin;
    }
};

// Compares A to Z without regard to case. `tag` must be in lower case.
inline bool BeginsWithTag(std::wstring_view text, std::wstring_view tag)
{
    if (text.size() < tag.size())
        return false;
    for (std::size_t i = 0; i < tag.size(); ++i)
    {
        const wchar_t c = text[i] >= L'A' && text[i] <= L'Z' ? static_cast<wchar_t>(text[i] | 0x20) : text[i];
        if (c != tag[i])
            return false;
    }
    return true;
}

// Unmasks the text between two positions in place and returns it.
inline std::wstring_view Unmasked(wchar_t* begin, const wchar_t* end)
{
    return {begin, clsProfMask::Unmask(begin, static_cast<std::size_t>(end - begin))};
}

// Errors in the name attribute of a tag.
enum class XmlNameFault
{
    None,
    Missing,
    Unfinished
};

// Parses `name="..."` and moves `text` past the closing quote. Other attributes are skipped.
inline XmlNameFault TakeName(scXmlText& text, std::wstring_view& name)
{
    constexpr std::wstring_view kAttribute = L"name=\"";
    wchar_t* const attribute = text.Find(kAttribute);
    if (attribute == nullptr)
        return XmlNameFault::Missing;
    text.begin = attribute + kAttribute.size();
    wchar_t* const quote = text.Find(L"\"");
    if (quote == nullptr)
        return XmlNameFault::Unfinished;
    name = Unmasked(text.begin, quote);
    text.begin = quote + 1;
    return XmlNameFault::None;
}

} // namespace qx
