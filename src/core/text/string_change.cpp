#include "core/text/characters.h"
#include "core/text/string.h"

#include <algorithm>
#include <string_view>

namespace qx
{

namespace
{

constexpr int kMostReplacements = 0x7FFFFFFE;

} // namespace

void String::Append(wchar_t c)
{
    if (c != 0)
        Append(&c, 1);
}

void String::Append(const wchar_t* text)
{
    if (text)
        Append(text, std::wstring_view(text).size());
}

void String::Append(const String& s)
{
    Append(s.Text(), s._length);
}

void String::Append(const wchar_t* text, std::size_t count)
{
    if (count == 0)
        return;
    // The appended characters may belong to this string and move with its record.
    const wchar_t* const begin = Text();
    const bool own = std::less_equal<>()(begin, text) && std::less_equal<>()(text, begin + _length);
    const std::size_t offset = own ? static_cast<std::size_t>(text - begin) : 0;

    Reserve(StringRecord::CapacityFor(_length + count));
    MoveCharacters(_record->text + _length, own ? _record->text + offset : text, count);
    SetLength(_length + count);
}

void String::AppendWithSeparator(const String& separator, const String& s)
{
    if (IsEmpty())
    {
        Append(s);
        return;
    }
    if (separator.IsEmpty() && s.IsEmpty())
        return;
    // Both arguments may be this string, whose text changes between the two appends.
    const String tail(s);
    Reserve(StringRecord::CapacityFor(_length + separator._length + tail._length));
    Append(separator);
    Append(tail);
}

void String::AppendWithSeparator(wchar_t separator, const String& s)
{
    if (IsEmpty())
    {
        Append(s);
        return;
    }
    const String tail(s); // as above
    Append(separator);
    Append(tail);
}

void String::TrimLeft()
{
    const std::size_t blanks = std::min(View().find_first_not_of(L' '), _length);
    Delete(0, blanks);
}

void String::TrimRight(wchar_t c)
{
    const std::size_t kept = View().find_last_not_of(c) + 1; // npos + 1 is 0
    if (kept < _length)
        Delete(kept, _length - kept);
}

void String::Insert(std::size_t pos, const String& s)
{
    if (pos > _length || s.IsEmpty())
        return;
    const String source(s); // `s` may be this string
    Reserve(StringRecord::CapacityFor(_length + source._length));
    wchar_t* place = _record->text + pos;
    MoveCharacters(place + source._length, place, _length - pos);
    MoveCharacters(place, source.Text(), source._length);
    SetLength(_length + source._length);
}

void String::Delete(std::size_t pos, std::size_t count)
{
    if (pos >= _length || count == 0)
        return;
    count = std::min(count, _length - pos);
    MakeUnique(true);
    MoveCharacters(_record->text + pos, _record->text + pos + count, _length - pos - count);
    SetLength(_length - count);
}

int String::Replace(wchar_t from, wchar_t to)
{
    const std::size_t first = View().find(from);
    if (first == std::wstring_view::npos)
        return 0;
    MakeUnique(true);
    wchar_t* const text = _record->text;
    int replacements = 0;
    std::size_t kept = first;
    for (std::size_t i = first; i < _length; ++i)
    {
        if (text[i] != from || replacements == kMostReplacements)
            text[kept++] = text[i];
        else if (++replacements, to != 0)
            text[kept++] = to;
    }
    SetLength(kept);
    return replacements;
}

int String::Replace(const String& from, const String& to)
{
    // Both arguments may be this string or share its record. The copies keep their records alive and unchanged.
    const String needle(from);
    const String insert(to);
    if (IsEmpty() || needle.IsEmpty())
        return 0;

    int replacements = 0;
    for (std::size_t at = View().find(needle.View()); at != std::wstring_view::npos && replacements < kMostReplacements;
         at = View().find(needle.View(), at + needle._length))
        ++replacements;
    if (replacements == 0)
        return 0;

    const auto hits = static_cast<std::size_t>(replacements);
    const std::size_t length = _length - hits * needle._length + hits * insert._length;
    Reserve(StringRecord::CapacityFor(std::max(length, _length)));

    // Single pass from left to right. If the text grows, it is first moved up by the growth, so that the write position
    // never overtakes the read position.
    wchar_t* const text = _record->text;
    const std::size_t shift = length > _length ? length - _length : 0;
    MoveCharacters(text + shift, text, _length);
    const std::wstring_view source(text + shift, _length);
    wchar_t* out = text;
    std::size_t read = 0;
    for (std::size_t hit = 0; hit < hits; ++hit)
    {
        const std::size_t at = source.find(needle.View(), read);
        MoveCharacters(out, source.data() + read, at - read);
        out += at - read;
        MoveCharacters(out, insert.Text(), insert._length);
        out += insert._length;
        read = at + needle._length;
    }
    MoveCharacters(out, source.data() + read, source.size() - read);
    SetLength(length);
    return replacements;
}

} // namespace qx
