#include "text/shifted_page.h"

#include <unicode/unorm2.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <vector>

namespace qxplatform
{

constexpr ShiftSequence kJisAscii = {"\x1b(B", CharacterSet::Ascii};
constexpr ShiftSequence kJisRoman = {"\x1b(J", CharacterSet::Ascii};
constexpr ShiftSequence kJis1978 = {"\x1b$@", CharacterSet::DoubleByte};
constexpr ShiftSequence kJis1983 = {"\x1b$B", CharacterSet::DoubleByte};
constexpr ShiftSequence kJisKatakana = {"\x1b(I", CharacterSet::Katakana};
constexpr ShiftSequence kOutKatakana = {"\x0e", CharacterSet::Katakana};
constexpr ShiftSequence kOutDoubleByte = {"\x0e", CharacterSet::DoubleByte};
constexpr ShiftSequence kInAscii = {"\x0f", CharacterSet::Ascii};
constexpr ShiftSequence kKoreanHeader = {"\x1b$)C", CharacterSet::Ascii};
constexpr ShiftSequence kHzDoubleByte = {"~{", CharacterSet::DoubleByte};
constexpr ShiftSequence kHzAscii = {"~}", CharacterSet::Ascii};

constexpr std::array<ShiftSequence, 8> kJapanese = {
    kJisAscii, kJisRoman, kJis1978, kJis1983, kJisKatakana, kOutKatakana, kInAscii};

constinit const ShiftRules ISO_2022_JP = {kJapanese, kJisAscii.bytes, kJis1983.bytes, "", ""};
constinit const ShiftRules ISO_2022_JP_KATAKANA = {kJapanese, kJisAscii.bytes, kJis1983.bytes, kJisKatakana.bytes, ""};
constinit const ShiftRules ISO_2022_JP_SHIFT_OUT = {kJapanese, kJisAscii.bytes, kJis1983.bytes, kOutKatakana.bytes, ""};
constinit const ShiftRules ISO_2022_KR = {
    {kKoreanHeader, kOutDoubleByte, kInAscii}, kInAscii.bytes, kOutDoubleByte.bytes, "", kKoreanHeader.bytes};
constinit const ShiftRules HZ = {{kHzDoubleByte, kHzAscii}, kHzAscii.bytes, kHzDoubleByte.bytes, "", "", true};

namespace
{

constexpr std::uint16_t kKatakanaLead = 0x8e00;

CharacterSet SetOf(std::uint16_t code)
{
    if (code < 0x80)
        return CharacterSet::Ascii;
    return (code & 0xff00) == kKatakanaLead ? CharacterSet::Katakana : CharacterSet::DoubleByte;
}

bool IsHalfWidthKatakana(wchar_t unit)
{
    return unit >= 0xff61 && unit <= 0xff9f;
}

// Converts half-width katakana to full-width; a sound mark is combined with the preceding letter.
std::vector<wchar_t> WidenKatakana(std::wstring_view text)
{
    UErrorCode status = U_ZERO_ERROR;
    const UNormalizer2* const composition = unorm2_getNFKCInstance(&status);
    std::vector<wchar_t> widened;
    for (std::size_t i = 0; i < text.size();)
    {
        std::size_t end = i;
        while (end < text.size() && IsHalfWidthKatakana(text[end]))
            ++end;
        if (end == i)
        {
            widened.push_back(text[i++]);
            continue;
        }
        // Composition never increases the number of units.
        const std::size_t start = widened.size();
        widened.resize(start + (end - i) * 2);
        const std::int32_t length = unorm2_normalize(composition, reinterpret_cast<const UChar*>(text.data() + i),
            static_cast<std::int32_t>(end - i), reinterpret_cast<UChar*>(widened.data() + start),
            static_cast<std::int32_t>(widened.size() - start), &status);
        widened.resize(start + static_cast<std::size_t>(length));
        i = end;
    }
    return widened;
}

} // namespace

ShiftedPage::ShiftedPage(const ShiftRules& rules, PageTables plane)
    : _rules(rules),
      _plane(std::move(plane)),
      _eightBitSet(_plane.lead[kKatakanaLead >> 8] ? CharacterSet::Katakana : CharacterSet::DoubleByte)
{
}

const ShiftSequence* ShiftedPage::FindShift(std::string_view bytes) const
{
    for (const ShiftSequence& shift : _rules.readable)
        if (!shift.bytes.empty() && bytes.starts_with(shift.bytes))
            return &shift;
    return nullptr;
}

std::string_view ShiftedPage::ShiftTo(CharacterSet set) const
{
    switch (set)
    {
    case CharacterSet::DoubleByte:
        return _rules.toDoubleByte;
    case CharacterSet::Katakana:
        return _rules.toKatakana;
    default:
        return _rules.toAscii;
    }
}

wchar_t ShiftedPage::Pair(unsigned lead, unsigned trail) const
{
    const wchar_t unit = _plane.pairs[((lead & 0x7f) << 8) | (trail | 0x80)];
    return unit == PageTables::kUndefined ? _plane.undefinedCharacter : unit;
}

bool ShiftedPage::Decode(std::string_view bytes, OnInvalid, WideOutput& out) const
{
    CharacterSet set = CharacterSet::Ascii;
    for (std::size_t i = 0; i < bytes.size();)
    {
        const std::string_view rest = bytes.substr(i);
        if (const ShiftSequence* const shift = FindShift(rest))
        {
            set = shift->set;
            i += shift->bytes.size();
            continue;
        }
        if (_rules.tildeEscapes && set == CharacterSet::Ascii && (rest.starts_with("~~") || rest.starts_with("~\n")))
        {
            if (rest[1] == '~')
                out.Put(L'~');
            i += 2;
            continue;
        }
        const auto byte = static_cast<unsigned char>(bytes[i++]);
        const bool isGraphic = (byte & 0x7f) > 0x20 && byte != 0x7f;
        const CharacterSet current = set == CharacterSet::Ascii && byte >= 0x80 ? _eightBitSet : set;
        if (!isGraphic || current == CharacterSet::Ascii)
        {
            // A line end resets the character set, because senders forget the escape.
            if (byte == '\n')
                set = CharacterSet::Ascii;
            out.Put(byte < 0x80 ? static_cast<wchar_t>(byte) : _plane.undefinedCharacter);
        }
        else if (current == CharacterSet::Katakana)
        {
            out.Put(Pair(kKatakanaLead >> 8, byte));
        }
        else
        {
            const bool hasTrail = i < bytes.size() && (bytes[i] & 0x7f) > 0x20;
            out.Put(hasTrail ? Pair(byte, static_cast<unsigned char>(bytes[i])) : _plane.undefinedCharacter);
            i += hasTrail;
        }
    }
    return true;
}

EncodeResult ShiftedPage::Encode(std::wstring_view text, const Encoding& encoding, ByteOutput& out) const
{
    const auto put = [&out](std::string_view bytes)
    {
        out.PutAll(bytes.data(), bytes.size(), std::identity());
    };
    std::vector<wchar_t> widened;
    if (_rules.toKatakana.empty() && std::any_of(text.begin(), text.end(), IsHalfWidthKatakana))
    {
        widened = WidenKatakana(text);
        text = {widened.data(), widened.size()};
    }
    EncodeResult result;
    CharacterSet set = CharacterSet::Ascii;
    put(_rules.header);
    for (const wchar_t unit : text)
    {
        const std::uint16_t code = _plane.fitted[unit];
        const bool missing = code == 0 && unit != 0;
        if (const CharacterSet wanted = SetOf(code); wanted != set)
        {
            put(ShiftTo(wanted));
            set = wanted;
        }
        const char pair[] = {static_cast<char>(code >> 8 & 0x7f), static_cast<char>(code & 0x7f)};
        if (missing)
            put(encoding.replacement);
        else if (_rules.tildeEscapes && code == '~')
            put("~~");
        else if (set == CharacterSet::DoubleByte)
            put({pair, 2});
        else
            out.Put(pair[1]);
        result.replaced |= missing;
    }
    if (set != CharacterSet::Ascii)
        put(_rules.toAscii);
    return result;
}

} // namespace qxplatform
