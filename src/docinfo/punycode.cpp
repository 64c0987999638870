#include "docinfo/punycode.h"

#include "docinfo/text_scan.h"

#include <cstddef>
#include <cstdint>

namespace qx
{
namespace
{

// The parameters of RFC 3492, section 5.
constexpr std::uint32_t kBase = 36, kTMin = 1, kTMax = 26, kSkew = 38, kDamp = 700;
constexpr std::uint32_t kInitialBias = 72, kInitialN = 0x80;
constexpr std::uint32_t kLastCharacter = 0x10FFFF;

// Returns kBase if the character is no digit.
std::uint32_t DigitOf(wchar_t c)
{
    if (IsLetterASCII(c))
        return static_cast<std::uint32_t>(LowerASCII(c) - L'a');
    return IsDigitASCII(c) ? static_cast<std::uint32_t>(c - L'0' + 26) : kBase;
}

std::uint32_t Adapt(std::uint32_t delta, std::uint32_t count, bool isFirst)
{
    delta /= isFirst ? kDamp : 2;
    delta += delta / count;
    std::uint32_t k = 0;
    for (; delta > (kBase - kTMin) * kTMax / 2; k += kBase)
        delta /= kBase - kTMin;
    return k + (kBase - kTMin + 1) * delta / (delta + kSkew);
}

// Reads one integer of variable length and adds it to `i`. Returns false if it is cut off or doesn't fit 32 bits.
bool AddInteger(std::wstring_view digits, std::size_t& position, std::uint32_t bias, std::uint32_t& i)
{
    std::uint32_t weight = 1;
    for (std::uint32_t k = kBase;; k += kBase)
    {
        const std::uint32_t digit = position < digits.size() ? DigitOf(digits[position++]) : kBase;
        if (digit == kBase || digit > (UINT32_MAX - i) / weight)
            return false;
        i += digit * weight;
        const std::uint32_t threshold = k <= bias ? kTMin : k >= bias + kTMax ? kTMax : k - bias;
        if (digit < threshold)
            return true;
        if (weight > UINT32_MAX / (kBase - threshold))
            return false;
        weight *= kBase - threshold;
    }
}

TextBuffer ToUnits(const std::u32string& characters)
{
    TextBuffer units;
    units.reserve(characters.size());
    for (const char32_t c : characters)
    {
        if (c > 0xFFFF)
            units.push_back(static_cast<wchar_t>(0xD800 + ((c - 0x10000) >> 10)));
        units.push_back(static_cast<wchar_t>(c > 0xFFFF ? 0xDC00 + (c & 0x3FF) : c));
    }
    return units;
}

} // namespace

std::optional<TextBuffer> DecodePunycode(std::wstring_view label)
{
    // A hyphen at the very beginning isn't a delimiter, because no basic characters precede it.
    const std::size_t delimiter = label.rfind(L'-');
    const std::size_t basic = delimiter == kNotFound ? 0 : delimiter;
    std::u32string characters;
    characters.reserve(label.size());
    for (const wchar_t c : label.substr(0, basic))
    {
        if (c >= kInitialN)
            return std::nullopt;
        characters.push_back(static_cast<char32_t>(c));
    }
    std::uint32_t n = kInitialN, bias = kInitialBias, i = 0;
    for (std::size_t position = basic > 0 ? basic + 1 : 0; position < label.size(); ++i)
    {
        const std::uint32_t before = i;
        if (!AddInteger(label, position, bias, i))
            return std::nullopt;
        const auto count = static_cast<std::uint32_t>(characters.size() + 1);
        bias = Adapt(i - before, count, before == 0);
        if (i / count > kLastCharacter - n)
            return std::nullopt;
        n += i / count;
        i %= count;
        if (n >= 0xD800 && n < 0xE000)
            return std::nullopt;
        characters.insert(i, 1, static_cast<char32_t>(n));
    }
    return ToUnits(characters);
}

} // namespace qx
