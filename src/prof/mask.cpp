#include "prof/mask.h"

#include <algorithm>
#include <array>
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
constexpr size_t kNumberMaskLength = 8; // as in &#x0001;

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

// The number of characters at the front that are masked as one.
size_t StepLength(std::wstring_view text)
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

struct scUnmasked
{
    size_t taken = 0; // characters of the sequence; 0: it is none
    wchar_t character = 0;
};

// A numbered sequence at the front, which begins "&#". The lowest 16 bits of the number are the character; what stands
// between the digits and the semicolon is dropped with it. A character of 0 would hide the rest of the text from every
// caller, so a sequence that stands for it stays as it is, and so does one without a digit.
scUnmasked ReadNumber(std::wstring_view text)
{
    const unsigned base = text.starts_with(L"&#x") ? 16 : 10;
    size_t next = base == 16 ? 3 : 2;
    unsigned number = 0;
    for (int digit = 0; next < text.size() && (digit = DigitValue(text[next], base)) >= 0; ++next)
        number = number * base + static_cast<unsigned>(digit); // what overflows is none of the lowest bits
    const auto character = static_cast<wchar_t>(number);
    const size_t end = text.find(L';', next);
    if (character == 0 || end == std::wstring_view::npos)
        return {};
    return {end + 1, character};
}

} // namespace

size_t clsProfMask::MaskedLength(std::wstring_view text)
{
    size_t length = 0;
    while (!text.empty())
    {
        const wchar_t c = text[0];
        if (IsLineBreak(c))
            length += kLineBreakMask.size();
        else if (const std::wstring_view named = NamedMaskOf(c); !named.empty())
            length += named.size();
        else
            length += c < L' ' ? kNumberMaskLength : 1;
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
        if (IsLineBreak(c))
            out = std::copy(kLineBreakMask.begin(), kLineBreakMask.end(), out);
        else if (const std::wstring_view named = NamedMaskOf(c); !named.empty())
            out = std::copy(named.begin(), named.end(), out);
        else if (c < L' ')
        {
            const wchar_t mask[] = {L'&', L'#', L'x', L'0', L'0', kHexDigits[c / 16], kHexDigits[c % 16], L';'};
            out = std::copy(std::begin(mask), std::end(mask), out);
        }
        else
            *out++ = c;
        text.remove_prefix(StepLength(text));
    }
    return out;
}

String clsProfMask::Mask(const String& text)
{
    const std::wstring_view view(text.Text(), text.Length());
    const size_t length = MaskedLength(view);
    if (length == view.size())
        return text;
    String masked;
    Mask(masked.GetBuffer(length + 1), view);
    masked.ReleaseBuffer(length);
    return masked;
}

size_t clsProfMask::Unmask(wchar_t* text, size_t length)
{
    std::wstring_view rest(text, length);
    wchar_t* out = text;
    while (!rest.empty())
    {
        const auto named = std::find_if(kNamedMasks.begin(), kNamedMasks.end(),
            [&](const scNamedMask& mask) { return rest[0] == L'&' && rest.starts_with(mask.mask); });
        if (named != kNamedMasks.end())
        {
            out = std::copy(named->character.begin(), named->character.end(), out);
            rest.remove_prefix(named->mask.size());
            continue;
        }
        if (const scUnmasked number = rest.starts_with(L"&#") ? ReadNumber(rest) : scUnmasked{}; number.taken != 0)
        {
            *out++ = number.character;
            rest.remove_prefix(number.taken);
            continue;
        }
        *out++ = rest[0];
        rest.remove_prefix(1);
    }
    return static_cast<size_t>(out - text);
}

} // namespace qx
