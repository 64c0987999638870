#include "core/text/string.h"

#include "core/text/text_compare.h"
#include "core/text/text_hash.h"

#include <windows.h>

#include <wchar.h>

#include <climits>
#include <string_view>

namespace qx
{

int String::Compare(const String& other, int maxChars) const
{
    if (_record == other._record)
        return 0;
    return CompareText(Text(), other.Text(), maxChars, CompareOrder::Ordinal, IsCaseSensitive());
}

int String::Compare(const wchar_t* other, int maxChars) const
{
    return CompareText(Text(), other, maxChars, CompareOrder::Ordinal, IsCaseSensitive());
}

int String::CompareLocale(const String& other, int maxChars) const
{
    if (_record == other._record)
        return 0;
    return CompareText(Text(), other.Text(), maxChars, CompareOrder::ByLocale, IsCaseSensitive());
}

std::uint64_t String::Hash() const noexcept
{
    return TextHash({Text(), _length});
}

// ---- Search and fields

int String::Find(const wchar_t* haystack, const wchar_t* needle)
{
    if (!haystack || !needle || *needle == 0)
        return -1;
    const wchar_t* found = wcsstr(haystack, needle);
    return found && found - haystack <= INT_MAX ? static_cast<int>(found - haystack) : -1;
}

int String::FindFirst(const String& s)
{
    _searchPosition = Find(Text(), s.Text());
    return _searchPosition;
}

int String::FindNext(const String& s)
{
    if (_searchPosition == -1)
        return -1;
    // The text may have become shorter since the last search.
    const std::size_t start = static_cast<std::size_t>(_searchPosition) + s._length;
    const int found = start <= _length ? Find(Text() + start, s.Text()) : -1;
    const std::size_t position = start + static_cast<std::size_t>(found);
    _searchPosition = found < 0 || position > INT_MAX ? -1 : static_cast<std::int32_t>(position);
    return _searchPosition;
}

String String::GetField(int index, const String& separator, bool remove)
{
    String field;
    if (index < 0 || IsEmpty())
        return field;
    const std::size_t skip = index == 0 ? 0 : separator._length;
    std::size_t start = 0;
    int pos = FindFirst(separator);
    for (; index > 0; --index)
    {
        if (pos < 0)
            return field;
        start = static_cast<std::size_t>(pos);
        pos = FindNext(separator);
    }
    const std::size_t end = pos < 0 ? _length : static_cast<std::size_t>(pos);
    field = Mid(start + skip, end - start - skip);
    if (remove)
        Delete(start, end + separator._length - start - skip);
    return field;
}

String String::GetField(int index, wchar_t separator, bool remove)
{
    return GetField(index, String(&separator, 0, 1), remove);
}

WCValSList<String> String::Split(wchar_t separator) const
{
    WCValSList<String> pieces;
    const std::wstring_view text = View();
    std::size_t start = 0;
    for (std::size_t at; (at = text.find(separator, start)) != std::wstring_view::npos; start = at + 1)
        pieces.Append(String(text.substr(start, at - start)));
    if (start < text.size())
        pieces.Append(String(text.substr(start)));
    return pieces;
}

} // namespace qx
