#include "text.h"

#include "secret.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdint>
#include <cstdio>

namespace qxut
{

namespace
{

constexpr std::uint32_t kReplacement = 0xFFFD;

// Returns the length of the sequence that begins with this byte, or 0 if no sequence does.
std::size_t SequenceLength(unsigned char lead)
{
    if (lead < 0x80)
        return 1;
    if (lead < 0xC2 || lead > 0xF4)
        return 0;
    return lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
}

struct Character
{
    std::uint32_t value;
    std::size_t length;
};

Character FirstCharacter(std::string_view utf8)
{
    constexpr std::uint32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const auto lead = static_cast<unsigned char>(utf8[0]);
    const std::size_t length = SequenceLength(lead);
    if (length == 0 || length > utf8.size())
        return {kReplacement, 1};
    std::uint32_t value = length == 1 ? lead : lead & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i)
    {
        const auto next = static_cast<unsigned char>(utf8[i]);
        if ((next & 0xC0) != 0x80)
            return {kReplacement, i};
        value = value << 6 | (next & 0x3Fu);
    }
    const bool isSurrogate = value >= 0xD800 && value <= 0xDFFF;
    return {value < kSmallest[length] || value > 0x10FFFF || isSurrogate ? kReplacement : value, length};
}

bool IsReplaced(std::string_view utf8, const Character& character)
{
    return character.value == kReplacement && utf8.substr(0, character.length) != "\xEF\xBF\xBD";
}

void AppendUtf8(std::string& out, std::uint32_t c)
{
    const auto append = [&](std::uint32_t byte)
    {
        out.push_back(static_cast<char>(byte));
    };
    if (c < 0x80)
    {
        append(c);
        return;
    }
    if (c < 0x800)
        append(0xC0 | c >> 6);
    else
    {
        if (c < 0x10000)
            append(0xE0 | c >> 12);
        else
        {
            append(0xF0 | c >> 18);
            append(0x80 | (c >> 12 & 0x3F));
        }
        append(0x80 | (c >> 6 & 0x3F));
    }
    append(0x80 | (c & 0x3F));
}

} // namespace

bool IsUtf8(std::string_view text)
{
    while (!text.empty())
    {
        const Character character = FirstCharacter(text);
        if (IsReplaced(text, character))
            return false;
        text.remove_prefix(character.length);
    }
    return true;
}

std::string Utf8Path(const std::filesystem::path& path)
{
    const auto text = path.generic_u8string();
    return {text.begin(), text.end()};
}

WideText::WideText(std::string_view utf8)
{
    _units.reserve(utf8.size() + 1);
    while (!utf8.empty())
    {
        const Character character = FirstCharacter(utf8);
        Append(character.value);
        utf8.remove_prefix(character.length);
    }
    _units.push_back(0);
}

void WideText::Erase()
{
    qxut::Erase(_units.data(), _units.size() * sizeof(QXWCHAR));
}

void WideText::Append(std::uint32_t character)
{
    if (character > 0xFFFF)
    {
        _units.push_back(static_cast<QXWCHAR>(0xD800 + ((character - 0x10000) >> 10)));
        character = 0xDC00 + (character & 0x3FF);
    }
    _units.push_back(static_cast<QXWCHAR>(character));
}

std::string Utf8(const QXWCHAR* text)
{
    std::string out;
    for (; *text != 0; ++text)
    {
        std::uint32_t c = static_cast<std::uint16_t>(*text);
        const std::uint32_t next = static_cast<std::uint16_t>(text[1]);
        if (c >= 0xD800 && c <= 0xDBFF && next >= 0xDC00 && next <= 0xDFFF)
        {
            c = 0x10000 + ((c - 0xD800) << 10) + (next - 0xDC00);
            ++text;
        }
        else if (c >= 0xD800 && c <= 0xDFFF)
            c = kReplacement;
        AppendUtf8(out, c);
    }
    return out;
}

namespace
{

// Replaces characters that a terminal shouldn't receive by escapes, except for the characters of `kept`.
std::string ShownExcept(std::string_view kept, std::string_view utf8)
{
    std::string out;
    const auto escape = [&](unsigned char byte)
    {
        char text[8];
        snprintf(text, sizeof(text), "\\x%02X", static_cast<unsigned>(byte));
        out += text;
    };
    while (!utf8.empty())
    {
        const Character character = FirstCharacter(utf8);
        const std::string_view bytes = utf8.substr(0, character.length);
        const std::uint32_t c = character.value;
        if (c < 0x80 && kept.find(static_cast<char>(c)) != kept.npos)
            out += bytes;
        else if (c == '\r' || c == '\n' || c == '\t')
            out += c == '\r' ? "\\r" : c == '\n' ? "\\n" : "\\t";
        else if (c < 0x20 || (c >= 0x7F && c < 0xA0))
            escape(static_cast<unsigned char>(c));
        else if (IsReplaced(utf8, character))
            std::for_each(bytes.begin(), bytes.end(), escape);
        else
            out += bytes;
        utf8.remove_prefix(character.length);
    }
    return out;
}

} // namespace

std::string Shown(std::string_view utf8)
{
    return ShownExcept("", utf8);
}

std::string ShownLines(std::string_view utf8)
{
    return ShownExcept("\n\t", utf8);
}

// Escapes control characters. Apart from line ends, they occur only in strings.
std::string JsonText(const nlohmann::ordered_json& json, int indent)
{
    const std::string text = json.dump(indent, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        const auto byte = static_cast<unsigned char>(text[i]);
        const bool isHigh = byte == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xA0;
        if (byte != 0x7F && !isHigh)
        {
            out += text[i];
            continue;
        }
        char escape[8];
        snprintf(
            escape, sizeof escape, "\\u%04x", static_cast<unsigned>(static_cast<unsigned char>(text[i += isHigh])));
        out += escape;
    }
    return out;
}

} // namespace qxut
