#include "markup/html_mask.h"

#include "markup/entities.h"

#include <wchar.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace qx
{
namespace
{

constexpr std::size_t kNumericLength = 8; // "&#x%04x;"

// The replacement of each unit below 256, empty if the unit is kept. The units 129 to 159 have no names.
constexpr auto kMaskOfLatin1 = []
{
    std::array<std::wstring_view, 256> masks{};
    for (const HtmlEntity& entity : kHtmlEntities)
        masks[entity.code] = entity.text;
    masks[L'\t'] = L"&#09;";
    masks[L'\''] = {}; // the table contains it, but only for unmasking
    return masks;
}();

constexpr bool IsNumeric(wchar_t c)
{
    return c > 255 || (c > 128 && c < kFirstLatin1Entity);
}

std::size_t MaskedLength(const wchar_t* text)
{
    std::size_t length = 0;
    for (; *text; ++text)
    {
        if (IsNumeric(*text))
            length += kNumericLength;
        else
            length += std::max<std::size_t>(kMaskOfLatin1[*text].size(), 1);
    }
    return length;
}

wchar_t* WriteNumeric(wchar_t* out, wchar_t c)
{
    constexpr wchar_t kDigits[] = L"0123456789abcdef";
    const wchar_t reference[kNumericLength] = {
        L'&', L'#', L'x', kDigits[c >> 12], kDigits[c >> 8 & 15], kDigits[c >> 4 & 15], kDigits[c & 15], L';'};
    return std::copy_n(reference, kNumericLength, out);
}

// The longest reference that is recognised, from "&" to ";".
constexpr std::size_t kLongestSpan = 8;

// Returns the length of the reference that begins at `text`, or 0 if there is none.
std::size_t SpanAt(const wchar_t* text, const wchar_t* end)
{
    const std::size_t room = std::min<std::size_t>(kLongestSpan, static_cast<std::size_t>(end - text));
    const wchar_t* semicolon = std::find(text, text + room, L';');
    return semicolon == text + room ? 0 : static_cast<std::size_t>(semicolon - text) + 1;
}

// Returns the unit of a numeric reference, or 0 if the reference is malformed. wcstoul parses the digits, so blanks and
// a sign before them are accepted.
wchar_t NumericUnit(std::wstring_view span)
{
    const bool hex = span[2] == L'x';
    const wchar_t* digits = span.data() + (hex ? 3 : 2);
    wchar_t* behind = nullptr;
    const auto unit = static_cast<wchar_t>(wcstoul(digits, &behind, hex ? 16 : 10));
    return behind == span.data() + span.size() - 1 ? unit : L'\0';
}

} // namespace

String MaskHtml(const wchar_t* text)
{
    String masked;
    const std::size_t length = MaskedLength(text);
    if (length == 0)
        return masked;
    wchar_t* out = masked.GetBuffer(length + 1);
    for (; *text; ++text)
    {
        if (IsNumeric(*text))
            out = WriteNumeric(out, *text);
        else if (const std::wstring_view mask = kMaskOfLatin1[*text]; mask.empty())
            *out++ = *text;
        else
            out = std::copy(mask.begin(), mask.end(), out);
    }
    masked.ReleaseBuffer(length);
    return masked;
}

String DemaskHtml(const wchar_t* text)
{
    String demasked(text);
    if (const std::size_t length = demasked.Length(); length != 0)
        demasked.ReleaseBuffer(DemaskHtmlInPlace(demasked.GetBuffer(length + 1), length));
    return demasked;
}

// Works in place, because the output is never ahead of the input.
std::size_t DemaskHtmlInPlace(wchar_t* text, std::size_t length)
{
    const wchar_t* in = text;
    const wchar_t* const end = text + length;
    wchar_t* out = text;
    while (in != end)
    {
        const wchar_t* ampersand = wmemchr(in, L'&', static_cast<std::size_t>(end - in));
        const std::size_t plain = static_cast<std::size_t>((ampersand ? ampersand : end) - in);
        if (out != in)
            wmemmove(out, in, plain);
        out += plain;
        in += plain;
        if (in == end)
            break;

        const std::wstring_view span(in, SpanAt(in, end));
        if (span.empty())
            *out++ = *in++;
        else if (span[1] == L'#')
        {
            const wchar_t unit = NumericUnit(span);
            if (unit != 0)
                *out++ = unit;
            // A malformed reference loses only its ampersand.
            in += unit != 0 ? span.size() : 1;
        }
        else
        {
            if (const HtmlEntity* entity = FindHtmlEntity(span))
                *out++ = entity->code;
            else
                out = std::copy(span.begin(), span.end(), out);
            in += span.size();
        }
    }
    *out = 0;
    return static_cast<std::size_t>(out - text);
}

} // namespace qx
