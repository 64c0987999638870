#include "docinfo/office_block.h"

#include "core/text/text_buffer.h"
#include "docinfo/text_scan.h"
#include "locale/machine_date.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace qx
{
namespace
{

constexpr std::wstring_view kOpen = L"<o:", kClose = L"</o:";

// How often the closing tags may be collected before the rest of the text is ignored. Only texts designed to be slow
// reach this limit.
constexpr int kMostCollections = 256;

bool IsSameLetter(wchar_t a, wchar_t b)
{
    return LowerASCII(a) == LowerASCII(b);
}

// Returns true if a tag may begin before a position and end after it.
bool IsInsideTag(std::wstring_view text, std::size_t position)
{
    const std::size_t mark = text.substr(0, position).find_last_of(L"<>");
    return mark != kNotFound && text[mark] == L'<';
}

// Removes all occurrences of `piece`. Returns true if the text on both sides of an occurrence may now form a new tag.
bool RemoveWithJoins(TextBuffer& text, std::wstring_view piece)
{
    bool mayFormTags = false;
    for (std::size_t at = text.find(piece); at != kNotFound && !mayFormTags; at = text.find(piece, at + piece.size()))
        mayFormTags = IsInsideTag(text, at);
    RemoveAll(text, piece, 0);
    return mayFormTags;
}

// Hashes of the text between any two positions, without regard to case.
class RangeHashes
{
public:
    explicit RangeHashes(std::wstring_view text)
    {
        _hashes.reserve(text.size() + 1);
        _powers.reserve(text.size() + 1);
        _hashes.push_back(0);
        _powers.push_back(1);
        for (const wchar_t c : text)
        {
            _hashes.push_back(_hashes.back() * kBase + LowerASCII(c) + 1);
            _powers.push_back(_powers.back() * kBase);
        }
    }

    std::uint64_t Of(std::size_t begin, std::size_t end) const
    {
        return _hashes[end] - _hashes[begin] * _powers[end - begin];
    }

private:
    static constexpr std::uint64_t kBase = 0x9E3779B97F4A7C15;

    std::vector<std::uint64_t> _hashes; // hashes of the first n characters
    std::vector<std::uint64_t> _powers;
};

// Iterates over the tags that begin with a lower-case literal. The name of a tag ends at the next ">".
class TagWalk
{
public:
    TagWalk(std::wstring_view text, std::wstring_view opening) : _text(text), _opening(opening) {}

    // Moves to the next complete tag. Returns false if there is none.
    bool Next()
    {
        begin = FindIgnoringCase(_text, _opening, _from);
        if (begin == kNotFound)
            return false;
        _from = begin + 1;
        name = begin + _opening.size();
        if (nameEnd < name)
            nameEnd = _text.find(L'>', name);
        return nameEnd != kNotFound;
    }

    std::size_t begin = 0; // positions of the current tag
    std::size_t name = 0;
    std::size_t nameEnd = 0;

private:
    const std::wstring_view _text;
    const std::wstring_view _opening;
    std::size_t _from = 0;
};

// The closing tags of a text. They are looked up by hashes of their names: names in a hostile text may overlap, so that
// the sum of their lengths grows with the square of the text's length.
class ClosingTags
{
public:
    explicit ClosingTags(std::wstring_view text) : _text(text), _hashes(text)
    {
        for (TagWalk tag(text, kClose); tag.Next();)
            _tags.emplace_back(_hashes.Of(tag.name, tag.nameEnd), tag.begin);
        std::sort(_tags.begin(), _tags.end());
    }

    // Returns the position of the first closing tag at `from` or later whose name is the text from `begin` to `end`, or
    // kNotFound.
    std::size_t Find(std::size_t begin, std::size_t end, std::size_t from) const
    {
        const std::uint64_t hash = _hashes.Of(begin, end);
        for (auto tag = std::lower_bound(_tags.begin(), _tags.end(), Tag(hash, from));
             tag != _tags.end() && tag->first == hash; ++tag)
            if (HasName(tag->second, _text.substr(begin, end - begin)))
                return tag->second;
        return kNotFound;
    }

private:
    using Tag = std::pair<std::uint64_t, std::size_t>; // the hash of the name, and the tag's position

    bool HasName(std::size_t tag, std::wstring_view name) const
    {
        const std::wstring_view other = _text.substr(tag + kClose.size(), name.size());
        return std::equal(name.begin(), name.end(), other.begin(), other.end(), IsSameLetter);
    }

    const std::wstring_view _text;
    const RangeHashes _hashes;
    std::vector<Tag> _tags;
};

struct Element
{
    std::size_t begin;
    std::size_t length;
    std::wstring_view key;
    std::wstring_view value;
};

// Finds elements with a closing tag of the same name. A name ends at the first ">".
class ElementSearch
{
public:
    explicit ElementSearch(std::wstring_view text) : _text(text) {}

    // Returns true if all closing tags have been collected, see FindClose.
    bool HasCollectedTags() const { return _tags.has_value(); }

    std::optional<Element> First()
    {
        for (TagWalk tag(_text, kOpen); tag.Next();)
        {
            const std::size_t close = FindClose(tag.name, tag.nameEnd);
            if (close == kNotFound)
                continue;
            const std::wstring_view key = _text.substr(tag.name, tag.nameEnd - tag.name);
            const std::size_t value = tag.nameEnd + 1;
            const std::size_t end = close + kClose.size() + key.size() + 1;
            return Element{tag.begin, end - tag.begin, key, _text.substr(value, close - value)};
        }
        return std::nullopt;
    }

private:
    // Returns the position of an element's closing tag, or kNotFound. Most elements contain no other element, so it is
    // the next closing tag. If it isn't, all closing tags are collected; from then on nothing is searched twice.
    std::size_t FindClose(std::size_t name, std::size_t nameEnd)
    {
        if (!_tags)
        {
            const std::size_t next = FindIgnoringCase(_text, kClose, nameEnd + 1);
            if (next == kNotFound)
                return kNotFound;
            const std::wstring_view key = _text.substr(name, nameEnd - name + 1); // with ">"
            const std::wstring_view other = _text.substr(next + kClose.size(), key.size());
            if (std::equal(key.begin(), key.end(), other.begin(), other.end(), IsSameLetter))
                return next;
            _tags.emplace(_text);
        }
        return _tags->Find(name, nameEnd, nameEnd + 1);
    }

    const std::wstring_view _text;
    std::optional<ClosingTags> _tags;
};

void TakeElement(clsDocu& record, const Element& element)
{
    const auto text = [&](clsVariant& field)
    {
        clsDocu::SetText(field, String(element.value));
    };
    const auto date = [&](SYSTEMTIME& field)
    {
        field = kNoTime;
        ReadISO8601Date(element.value, field);
    };

    if (element.key == L"Subject")
        text(record.Subject);
    else if (element.key == L"Author")
        text(record.Author);
    else if (element.key == L"LastAuthor")
        text(record.LastAuthor);
    else if (element.key == L"Keywords")
        text(record.Keywords);
    else if (element.key == L"Created")
        date(record.Created);
    else if (element.key == L"LastSaved")
        date(record.LastSaved);
    else if (element.key == L"Description")
        text(record.Comments);
}

} // namespace

// Each element is removed with all its repetitions before the next search, and the remaining text may form new
// elements. If it can't, the search continues at the place of the removed element, because elements before it have no
// closing tags and won't get any.
int ParseOfficeProperties(clsDocu& record, std::wstring_view text)
{
    TextBuffer left(text);
    std::size_t from = 0;
    int collections = 0;
    while (collections < kMostCollections)
    {
        ElementSearch search(std::wstring_view(left).substr(from));
        const std::optional<Element> element = search.First();
        if (!element)
            break;
        collections += search.HasCollectedTags();
        TakeElement(record, *element);
        const std::size_t begin = from + element->begin;
        const TextBuffer whole = left.substr(begin, element->length);
        from = RemoveWithJoins(left, whole) ? 0 : begin;
    }
    return 0;
}

} // namespace qx
