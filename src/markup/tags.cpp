// Removes tags from a text. Some tags are replaced by a line end or other text.
#include "markup/html_to_text.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace qx
{
namespace
{

enum class TagKind : unsigned char
{
    Text,       // is replaced by its text, unless it is inside an ignored element
    BeginsSkip, // opens an ignored element
    EndsSkip
};

struct Tag
{
    std::wstring_view name;
    std::wstring_view text;
    TagKind kind = TagKind::Text;
};

// Names are in lower case. Tags that aren't listed are removed without a replacement.
constexpr auto kTags = []
{
    std::array table = std::to_array<Tag>({
        {L"/h1", L"\r"},
        {L"/h2", L"\r"},
        {L"/h3", L"\r"},
        {L"/h4", L"\r"},
        {L"/h5", L"\r"},
        {L"/h6", L"\r"},
        {L"li", L"- "},
        {L"/p", L"\r"},
        {L"/div", L"\r"},
        {L"/ol", L"\r"},
        {L"/tr", L"\r"},
        {L"/ul", L"\r"},
        {L"/thead", L"\r"},
        {L"/tbody", L"\r"},
        {L"/blockquote", L"\r"},
        {L"/address", L"\r"},
        {L"/pre", L"\r"},
        {L"/li", L"\r"},
        {L"/td", L" "},
        {L"/th", L" "},
        {L"br", L"\r"},
        {L"hr", L"\r"},
        {L"head", L"", TagKind::BeginsSkip},
        {L"/head", L"", TagKind::EndsSkip},
        {L"script", L"", TagKind::BeginsSkip},
        {L"/script", L"", TagKind::EndsSkip},
        {L"iframe", L"", TagKind::BeginsSkip},
        {L"/iframe", L"", TagKind::EndsSkip},
        {L"textarea", L"", TagKind::BeginsSkip},
        {L"/textarea", L"", TagKind::EndsSkip},
        {L"select", L"", TagKind::BeginsSkip},
        {L"/select", L"", TagKind::EndsSkip},
        {L"style", L"", TagKind::BeginsSkip},
        {L"/style", L"", TagKind::EndsSkip},
    });
    std::sort(table.begin(), table.end(), [](const Tag& a, const Tag& b) { return a.name < b.name; });
    return table;
}();

constexpr std::size_t kLongestName = 11; // "/blockquote"

const Tag* FindTag(std::wstring_view name)
{
    const auto* at = std::lower_bound(
        kTags.begin(), kTags.end(), name, [](const Tag& tag, std::wstring_view key) { return tag.name < key; });
    return at != kTags.end() && at->name == name ? at : nullptr;
}

// Finds a tag by its name as written. Converts the name to lower case by the rules of the user's locale, which map each
// unit to one unit.
class TagFinder
{
public:
    const Tag* Find(std::wstring_view written)
    {
        if (written.size() > kLongestName)
            return nullptr;
        if (std::all_of(written.begin(), written.end(), [](wchar_t c) { return c < 128 && !(c >= L'A' && c <= L'Z'); }))
            return FindTag(written);
        String name(written.data(), 0, written.size());
        name.MakeLower();
        return FindTag({name.Text(), name.Length()});
    }
};

class TagRemover
{
public:
    TagRemover(wchar_t* html, std::size_t length, bool placeholders)
        : _html(html),
          _in(html),
          _end(html + length),
          _out(html),
          _placeholders(placeholders),
          _open(placeholders ? L'[' : L'<'),
          _close(placeholders ? L']' : L'>')
    {
    }

    std::size_t Run()
    {
        while (_in != _end)
        {
            const wchar_t c = *_in++;
            if (c == _open)
                BeginTag();
            else
                WriteText(c);
        }
        *_out = 0;
        return static_cast<std::size_t>(_out - _html);
    }

private:
    // Reads a tag. Starts after the opening character and ends after the tag or at the end of the text.
    void BeginTag()
    {
        StartName();
        while (_in != _end)
        {
            const wchar_t c = *_in++;
            if (c == _open)
                StartName(); // a new opening character discards the tag so far
            else if (c == _close)
            {
                const wchar_t* end = _nameEnd ? _nameEnd : _in - 1;
                SkipPlaceholder(_close);
                EndTag({_name, static_cast<std::size_t>(end - _name)});
                return;
            }
            else if (!_nameEnd && IsNameEnd(c))
                _nameEnd = _in - 1;
        }
    }

    void StartName()
    {
        SkipPlaceholder(_open);
        _name = _in;
        _nameEnd = nullptr;
    }

    void EndTag(std::wstring_view name)
    {
        const Tag* tag = _finder.Find(name);
        if (!tag)
            return;
        // The depth can fall below 0: after a closing tag without an opening one, text is dropped until the next
        // opening tag.
        if (tag->kind == TagKind::BeginsSkip)
            ++_ignoreDepth;
        else if (tag->kind == TagKind::EndsSkip)
            --_ignoreDepth;
        else if (_ignoreDepth == 0)
            _out = std::copy(tag->text.begin(), tag->text.end(), _out);
    }

    void WriteText(wchar_t c)
    {
        if (_ignoreDepth != 0)
            return;
        if (c == L'\t' || c == L'\n' || c == L'\r')
            c = L' ';
        const bool space = c == L' ' || c == kNoBreakSpace;
        if (!space || !_lastWasSpace)
            *_out++ = c;
        _lastWasSpace = space;
    }

    // Skips the underscore and the second bracket that follow each bracket of a placeholder.
    void SkipPlaceholder(wchar_t bracket)
    {
        if (_placeholders && _end - _in >= 2 && _in[0] == L'_' && _in[1] == bracket)
            _in += 2;
    }

    static constexpr bool IsNameEnd(wchar_t c)
    {
        return c == L'\t' || c == L'\n' || c == L'\r' || c == L' ' || c == kNoBreakSpace;
    }

    static constexpr wchar_t kNoBreakSpace = 0xA0;

    wchar_t* const _html;
    const wchar_t* _in;
    const wchar_t* const _end;
    wchar_t* _out;
    const bool _placeholders;
    const wchar_t _open;
    const wchar_t _close;
    const wchar_t* _name = nullptr;
    const wchar_t* _nameEnd = nullptr; // null until the end of the name is found
    unsigned _ignoreDepth = 0;
    bool _lastWasSpace = false;
    TagFinder _finder;
};

} // namespace

std::size_t RemoveTags(wchar_t* html, std::size_t length, bool placeholders)
{
    return TagRemover(html, length, placeholders).Run();
}

} // namespace qx
