#include "docinfo/rtf_groups.h"

#include "core/text/text_buffer.h"
#include "docinfo/text_scan.h"

#include <algorithm>
#include <utility>

namespace qx
{
namespace
{

constexpr std::wstring_view kGroup = L"{\\";

// Returns the position after "{\" and the letters of a key if a group begins here. A key is followed by white space, a
// digit or a backslash.
std::size_t KeyEnd(std::wstring_view text, std::size_t at)
{
    if (!StandsAt(text, at, kGroup))
        return kNotFound;
    const std::size_t key = at + kGroup.size();
    std::size_t end = key;
    while (end < text.size() && IsLetterASCII(text[end]))
        ++end;
    if (end == key || end == text.size())
        return kNotFound;
    const wchar_t next = text[end];
    return IsSpaceASCII(next) || IsDigitASCII(next) || next == L'\\' ? end : kNotFound;
}

} // namespace

std::optional<std::wstring_view> FindRTFInfo(std::wstring_view text)
{
    static constexpr std::wstring_view kInfo = L"{\\info";
    for (std::size_t at = FindIgnoringCase(text, kInfo, 0); at != kNotFound; at = FindIgnoringCase(text, kInfo, at + 1))
    {
        const std::size_t begin = at + kInfo.size();
        const std::size_t keyEnd = KeyEnd(text, begin);
        if (keyEnd == kNotFound)
            continue;
        // The groups end at the first closing brace that is followed by another one.
        for (std::size_t brace = text.find(L'}', keyEnd); brace != kNotFound; brace = text.find(L'}', brace + 1))
        {
            const std::size_t next = SkipSpace(text, brace + 1);
            if (next < text.size() && text[next] == L'}')
                return text.substr(begin, brace + 1 - begin);
        }
        return std::nullopt;
    }
    return std::nullopt;
}

RTFGroups::RTFGroups(std::wstring_view text)
{
    std::size_t begin = 0;
    for (std::size_t brace = text.find(L'}'); brace != kNotFound; brace = text.find(L'}', begin))
    {
        _pieces.emplace_back(text.substr(begin, brace + 1 - begin));
        _ends.push_back(EndOf(_pieces.back()));
        begin = brace + 1;
    }
}

std::optional<RTFGroups::Group> RTFGroups::Take()
{
    for (; _current < _pieces.size(); _current = NextPiece(_current), _searched = 0)
    {
        const std::wstring_view piece = _pieces[_current];
        for (std::size_t at = piece.find(L'{', _searched); at != kNotFound; at = piece.find(L'{', at + 1))
        {
            const std::size_t keyEnd = KeyEnd(piece, at);
            if (keyEnd == kNotFound)
                continue;
            std::size_t valueEnd = piece.size() - 1;
            while (valueEnd > keyEnd + 1 && IsSpaceASCII(piece[valueEnd - 1]))
                --valueEnd;
            const std::size_t key = at + kGroup.size();
            Group group = {
                TextBuffer(piece.substr(key, keyEnd - key)), TextBuffer(piece.substr(keyEnd, valueEnd - keyEnd))};
            // The text before the group is joined with the next piece, which may complete a group that begins in this
            // text.
            const std::size_t opening = piece.substr(0, at).rfind(L'{');
            RemoveAll(TextBuffer(piece.substr(at)));
            _current = NextPiece(_current);
            _searched = opening != kNotFound ? opening : at;
            return group;
        }
    }
    return std::nullopt;
}

std::uint64_t RTFGroups::EndOf(std::wstring_view piece)
{
    constexpr std::size_t kCharacters = 4;
    std::uint64_t end = 0;
    for (std::size_t i = piece.size() - std::min(piece.size(), kCharacters); i < piece.size(); ++i)
        end = end << 16 | static_cast<std::uint16_t>(piece[i]);
    return end;
}

// Removes all repetitions of a group. No piece before the current one contains a group.
void RTFGroups::RemoveAll(const TextBuffer& group)
{
    const std::uint64_t end = EndOf(group);
    std::vector<std::size_t> found;
    for (std::size_t i = _current; i < _pieces.size(); ++i)
        if (_ends[i] == end && _pieces[i].ends_with(group))
            found.push_back(i);
    for (const std::size_t i : found)
    {
        TextBuffer left = std::move(_pieces[i]);
        left.resize(left.size() - group.size());
        _pieces[i].clear();
        _ends[i] = kRemoved;
        const std::size_t next = NextPiece(i);
        if (next == _pieces.size() || left.empty())
            continue;
        _pieces[next].insert(0, left);
        _ends[next] = EndOf(_pieces[next]);
    }
}

std::size_t RTFGroups::NextPiece(std::size_t after) const
{
    std::size_t next = after + 1;
    while (next < _pieces.size() && _ends[next] == kRemoved)
        ++next;
    return next;
}

} // namespace qx
