#include "prof/mask.h"

#include "prof/text_scan.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

namespace qx
{

namespace
{

struct scNamedMask
{
    std::wstring_view character;
    std::wstring_view mask;
};

// In the order in which unmasking tries them.
constexpr std::array kNamedMasks{
    scNamedMask{L"\r\n", L"&cr;"},
    scNamedMask{L"\t", L"&tab;"},
    scNamedMask{L"<", L"&lt;"},
    scNamedMask{L">", L"&gt;"},
    scNamedMask{L"&", L"&amp;"},
    scNamedMask{L"'", L"&apos;"},
    scNamedMask{L"\"", L"&quot;"},
};
constexpr std::wstring_view kLineBreakMask = kNamedMasks[0].mask;
constexpr std::size_t kNumberMaskLength = 8; // as in &#x0001;

// The length of each character's mask, or 1 for characters that aren't masked.
constexpr std::size_t kMaskable = L'>' + 1;
constexpr auto kMaskLengths = []
{
    std::array<std::uint8_t, kMaskable> lengths{};
    for (std::size_t c = 0; c < lengths.size(); ++c)
        lengths[c] = static_cast<std::uint8_t>(c < L' ' ? kNumberMaskLength : 1);
    lengths[L'\r'] = lengths[L'\n'] = static_cast<std::uint8_t>(kLineBreakMask.size());
    for (const scNamedMask& named : kNamedMasks)
    {
        if (named.character.size() == 1)
            lengths[named.character[0]] = static_cast<std::uint8_t>(named.mask.size());
    }
    return lengths;
}();

std::size_t MaskLength(wchar_t c)
{
    return c < kMaskable ? kMaskLengths[c] : 1;
}

std::wstring_view NamedMaskOf(wchar_t c)
{
    for (const scNamedMask& named : kNamedMasks)
    {
        if (named.character.size() == 1 && named.character[0] == c)
            return named.mask;
    }
    return {};
}

bool IsLineBreak(wchar_t c)
{
    return c == L'\r' || c == L'\n';
}

// Returns how many characters at the front are masked as one unit.
std::size_t StepLength(std::wstring_view text)
{
    return text.starts_with(L"\r\n") ? 2 : 1;
}

int DigitValue(wchar_t c, unsigned base)
{
    int value = -1;
    if (c >= L'0' && c <= L'9')
        value = c - L'0';
    else if (c >= L'a' && c <= L'f')
        value = c - L'a' + 10;
    else if (c >= L'A' && c <= L'F')
        value = c - L'A' + 10;
    return value < static_cast<int>(base) ? value : -1;
}

// Finds the next semicolon and caches its position. Without the cache, a text with many unfinished sequences and a
// distant semicolon would be searched once for each sequence.
class clsNextSemicolon
{
public:
    explicit clsNextSemicolon(std::wstring_view text) : _text(text) {}

    std::size_t From(std::size_t position)
    {
        if (_found < position || !_isSought)
            _found = _text.find(L';', position);
        _isSought = true;
        return _found;
    }

private:
    std::wstring_view _text;
    std::size_t _found = 0;
    bool _isSought = false;
};

struct scUnmasked
{
    std::size_t end = 0; // after the sequence; 0 if there is no valid sequence
    wchar_t character = 0;
};

// Reads a numeric sequence, which begins with "&#" at `position`. The lowest 16 bits of the number are the character;
// any text between the digits and the semicolon is dropped. Sequences without digits are kept. So are sequences for
// character 0, which would hide the rest of the text from every caller.
scUnmasked ReadNumber(std::wstring_view text, std::size_t position, clsNextSemicolon& semicolon)
{
    const unsigned base = text.substr(position).starts_with(L"&#x") ? 16 : 10;
    std::size_t next = position + (base == 16 ? 3 : 2);
    unsigned number = 0;
    for (int digit = 0; next < text.size() && (digit = DigitValue(text[next], base)) >= 0; ++next)
        number = number * base + static_cast<unsigned>(digit); // overflow doesn't affect the lowest 16 bits
    const auto character = static_cast<wchar_t>(number);
    if (character == 0)
        return {};
    const std::size_t end = semicolon.From(next);
    return end == std::wstring_view::npos ? scUnmasked{} : scUnmasked{end + 1, character};
}

} // namespace

std::size_t clsProfMask::MaskedLength(std::wstring_view text)
{
    if (!HasMaskedCharacter(text))
        return text.size();
    std::size_t length = 0;
    while (!text.empty())
    {
        length += MaskLength(text[0]);
        text.remove_prefix(StepLength(text));
    }
    return length;
}

wchar_t* clsProfMask::Mask(wchar_t* out, std::wstring_view text)
{
    constexpr wchar_t kHexDigits[] = L"0123456789abcdef";
    while (!text.empty())
    {
        const wchar_t c = text[0];
        if (MaskLength(c) == 1)
            *out++ = c;
        else if (IsLineBreak(c))
            out = std::copy(kLineBreakMask.begin(), kLineBreakMask.end(), out);
        else if (const std::wstring_view named = NamedMaskOf(c); !named.empty())
            out = std::copy(named.begin(), named.end(), out);
        else
        {
            const wchar_t mask[] = {L'&', L'#', L'x', L'0', L'0', kHexDigits[c / 16], kHexDigits[c % 16], L';'};
            out = std::copy(std::begin(mask), std::end(mask), out);
        }
        text.remove_prefix(StepLength(text));
    }
    return out;
}

String clsProfMask::Mask(const String& text)
{
    const std::wstring_view view(text.Text(), text.Length());
    const std::size_t length = MaskedLength(view);
    if (length == view.size())
        return text;
    String masked;
    Mask(masked.GetBuffer(length + 1), view);
    masked.ReleaseBuffer(length);
    return masked;
}

std::size_t clsProfMask::Unmask(wchar_t* text, std::size_t length)
{
    const std::wstring_view view(text, length);
    clsNextSemicolon semicolon(view);
    std::size_t position = view.find(L'&');
    if (position == std::wstring_view::npos)
        return length;
    wchar_t* out = text + position;
    while (position < length)
    {
        const std::wstring_view rest = view.substr(position);
        if (rest[0] == L'&')
        {
            const auto named = std::find_if(kNamedMasks.begin(), kNamedMasks.end(),
                [&](const scNamedMask& mask) { return rest.starts_with(mask.mask); });
            if (named != kNamedMasks.end())
            {
                out = std::copy(named->character.begin(), named->character.end(), out);
                position += named->mask.size();
                continue;
            }
            const scUnmasked number = rest.starts_with(L"&#") ? ReadNumber(view, position, semicolon) : scUnmasked{};
            if (number.end != 0)
            {
                *out++ = number.character;
                position = number.end;
                continue;
            }
        }
        *out++ = rest[0];
        ++position;
    }
    return static_cast<std::size_t>(out - text);
}

} // namespace qx
