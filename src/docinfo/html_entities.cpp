#include "docinfo/html_entities.h"

#include "core/text/text_buffer.h"
#include "docinfo/text_scan.h"
#include "markup/entities.h"

#include <algorithm>
#include <cstdint>
#include <optional>

namespace qx
{
namespace
{

constexpr std::size_t kLongestName = 8; // "&frac14;", "&middot;" and others

bool IsLatin1(const HtmlEntity& entity)
{
    return entity.code >= kFirstLatin1Entity;
}

static_assert(std::all_of(kHtmlEntities.begin(), kHtmlEntities.end(),
    [](const HtmlEntity& entity) { return entity.text.size() <= kLongestName; }));

TextBuffer DecodeNames(std::wstring_view text)
{
    TextBuffer result;
    result.reserve(text.size());
    std::size_t done = 0;
    for (std::size_t at = text.find(L'&'); at != kNotFound; at = text.find(L'&', at + 1))
    {
        const std::size_t length = text.substr(at, kLongestName).find(L';') + 1; // npos + 1 is 0
        const HtmlEntity* const entity = FindHtmlEntity(text.substr(at, length));
        if (entity == nullptr || !IsLatin1(*entity))
            continue;
        result.append(text, done, at - done);
        result.push_back(entity->code);
        done = at + length;
    }
    return result.append(text, done);
}

// A numeric reference at the end of a text: "&#" and digits, or "&#x" and two to four hexadecimal digits. `begin` is
// the position of the ampersand.
struct Reference
{
    std::size_t begin;
    wchar_t value; // 0: the reference is removed
};

std::optional<Reference> ReferenceAtEnd(const TextBuffer& text)
{
    constexpr std::size_t kMostHexDigits = 4;
    const auto isIntroduced = [&](std::size_t digits)
    {
        return digits >= 2 && text[digits - 1] == L'#' && text[digits - 2] == L'&';
    };

    std::size_t digits = text.size();
    while (digits > 0 && IsDigitASCII(text[digits - 1]))
        --digits;
    if (digits < text.size() && isIntroduced(digits))
        return Reference{digits - 2, static_cast<wchar_t>(DecimalNumber(std::wstring_view(text).substr(digits)))};

    digits = text.size();
    std::uint32_t value = 0;
    while (digits > 0 && text.size() - digits < kMostHexDigits && HexDigit(text[digits - 1]) >= 0)
    {
        --digits;
        value |= static_cast<std::uint32_t>(HexDigit(text[digits])) << 4 * (text.size() - digits - 1);
    }
    if (text.size() - digits < 2 || digits == 0 || LowerASCII(text[digits - 1]) != L'x' || !isIntroduced(digits - 1))
        return std::nullopt;
    // After "&#X" the value is 0, as for a decimal number without digits.
    return Reference{digits - 3, text[digits - 1] == L'x' ? static_cast<wchar_t>(value) : L'\0'};
}

} // namespace

// A reference contains one ampersand, at its beginning, and one semicolon, at its end. So references never overlap, and
// the order in which they are decoded doesn't matter: one pass decodes each as soon as it reaches the semicolon.
TextBuffer DecodeEntities(std::wstring_view text, bool named)
{
    const TextBuffer decodedNames = named ? DecodeNames(text) : TextBuffer();
    TextBuffer result;
    result.reserve(text.size());
    for (wchar_t c : named ? std::wstring_view(decodedNames) : text)
    {
        if (c == L'\r' || c == L'\n')
            continue;
        // A decoded semicolon may end another reference.
        while (c == L';')
        {
            const std::optional<Reference> reference = ReferenceAtEnd(result);
            if (!reference)
                break;
            result.resize(reference->begin);
            c = reference->value;
        }
        if (c != 0)
            result.push_back(c);
    }
    return result;
}

} // namespace qx
