#include "profile_input.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <initializer_list>
#include <random>
#include <string_view>

namespace bench
{

namespace
{

// Python's random generator and its drawing functions, so that the input is byte for byte the same as for the measured
// peers.
class PythonRandom
{
public:
    explicit PythonRandom(std::uint32_t seed)
    {
        constexpr std::uint32_t n = 624;
        std::array<std::uint32_t, n> state;
        state[0] = 19650218;
        for (std::uint32_t i = 1; i < n; ++i)
            state[i] = 1812433253u * (state[i - 1] ^ state[i - 1] >> 30) + i;
        std::uint32_t i = 1;
        const auto step = [&]
        {
            if (++i == n)
            {
                state[0] = state[n - 1];
                i = 1;
            }
        };
        for (std::uint32_t k = 0; k < n; ++k, step())
            state[i] = (state[i] ^ (state[i - 1] ^ state[i - 1] >> 30) * 1664525u) + seed;
        for (std::uint32_t k = 0; k < n - 1; ++k, step())
            state[i] = (state[i] ^ (state[i - 1] ^ state[i - 1] >> 30) * 1566083941u) - i;
        state[0] = 0x80000000;
        StateOnly sequence{state};
        _engine.seed(sequence);
    }

    double Fraction()
    {
        const std::uint32_t a = Draw() >> 5;
        const std::uint32_t b = Draw() >> 6;
        return (a * 67108864.0 + b) / 9007199254740992.0;
    }

    std::uint32_t Below(std::uint32_t limit)
    {
        const int bits = std::bit_width(limit);
        std::uint32_t drawn = 0;
        do
            drawn = Draw() >> (32 - bits);
        while (drawn >= limit);
        return drawn;
    }

    std::uint32_t Between(std::uint32_t first, std::uint32_t last) { return first + Below(last - first + 1); }

private:
    // Passes a state in the form of a seed sequence.
    struct StateOnly
    {
        using result_type = std::uint32_t;
        const std::array<std::uint32_t, 624>& state;
        template <class Iterator>
        void generate(Iterator begin, Iterator end)
        {
            for (std::size_t i = 0; begin != end; ++begin, ++i)
                *begin = state[i % state.size()];
        }
    };

    std::uint32_t Draw() { return static_cast<std::uint32_t>(_engine()); }

    std::mt19937 _engine;
};

constexpr std::string_view kWords[] = {"report", "page", "size", "title", "author", "printer", "margin", "column",
    "header", "footer", "line", "total", "sales", "region", "north", "south", "value", "date", "format",
    "Gr\u00F6\u00DFe", "Stra\u00DFe", "\u00DCbersicht", "caf\u00E9", "na\u00EFve", "tr\u00F6ste", "font", "color",
    "width", "height", "index", "table", "chart", "image", "export", "import", "user", "server"};

// Appends all parts. Concatenation with + makes some compilers warn about overlapping copies.
void Add(std::string& text, std::initializer_list<std::string_view> parts)
{
    for (const std::string_view part : parts)
        text += part;
}

std::string Numbered(std::string_view name, std::uint32_t number, std::size_t digits)
{
    const std::string text = std::to_string(number);
    std::string numbered(name);
    numbered.append(digits - std::min(digits, text.size()), '0');
    return numbered += text;
}

std::string Words(PythonRandom& random)
{
    std::string text;
    for (std::uint32_t count = random.Between(5, 15); count != 0; --count)
        Add(text, {text.empty() ? "" : " ", kWords[random.Below(std::size(kWords))]});
    return text;
}

std::string MakeValue(PythonRandom& random)
{
    const double kind = random.Fraction();
    if (kind < .3)
        return std::to_string(random.Between(0, 99999));
    if (kind < .4)
    {
        const std::string x = std::to_string(random.Between(0, 999));
        std::string pair;
        Add(pair, {"(", x, ",", std::to_string(random.Between(0, 999)), ")"});
        return pair;
    }
    if (kind < .5)
        return "TRUE";
    std::string words = Words(random);
    return words += kind > .95 ? " & <x>" : "";
}

Settings MakeSettings()
{
    PythonRandom random(1);
    Settings settings;
    for (std::uint32_t g = 0; g < 50; ++g)
    {
        Group group{Numbered("Group", g, 2), {}};
        for (std::uint32_t s = 0; s < 100; ++s)
        {
            Section section{Numbered("Section", s, 3), {}};
            for (std::uint32_t k = 0; k < 20; ++k)
            {
                std::string value = MakeValue(random);
                std::string name = Numbered("Key", k, 2);
                Add(name, {"_", std::string_view("abcdef").substr(random.Below(6), 1)});
                section.leaves.push_back({std::move(name), std::move(value)});
            }
            group.sections.push_back(std::move(section));
        }
        settings.groups.push_back(std::move(group));
    }
    for (int i = 0; i < 100000; ++i)
    {
        const std::uint32_t leaf = random.Below(100000);
        const Group& group = settings.groups[leaf / 2000];
        const Section& section = group.sections[leaf / 20 % 100];
        settings.paths.push_back({group.name, section.name, section.leaves[leaf % 20].name});
    }
    return settings;
}

std::string Utf16(std::string_view utf8)
{
    std::string bytes = "\xFF\xFE";
    for (std::size_t i = 0; i < utf8.size(); ++i)
    {
        unsigned c = static_cast<unsigned char>(utf8[i]);
        if (c >= 0x80) // all non-ASCII characters here have two bytes
            c = (c & 0x1F) << 6 | (static_cast<unsigned char>(utf8[++i]) & 0x3Fu);
        bytes += static_cast<char>(c & 0xFF);
        bytes += static_cast<char>(c >> 8);
    }
    return bytes;
}

std::string Masked(const std::string& value)
{
    std::string text;
    for (const char c : value)
        text += c == '&' ? "&amp;" : c == '<' ? "&lt;" : c == '>' ? "&gt;" : std::string(1, c);
    return text;
}

} // namespace

const Settings& MadeSettings()
{
    static const Settings settings = MakeSettings();
    return settings;
}

std::string ProfileText(const Settings& settings)
{
    std::string text = "[/]\r\n {\r\n";
    for (const Group& group : settings.groups)
    {
        Add(text, {" [", group.name, "]\r\n  {\r\n"});
        for (const Section& section : group.sections)
        {
            Add(text, {"  [", section.name, "]\r\n   {\r\n"});
            for (const Leaf& leaf : section.leaves)
                Add(text, {"   ", leaf.name, "=", leaf.value, "\r\n"});
            text += "   }\r\n";
        }
        text += "  }\r\n";
    }
    return Utf16(text += " }\r\n");
}

std::string XmlTextUtf8(const Settings& settings)
{
    std::string text =
        "<?xml version=\"1.0\" encoding=\"UTF-16\" standalone=\"yes\"?>\r\n<!-- DTD -->\r\n"
        "<!DOCTYPE profile [\r\n <!ENTITY cr \"&#x000a;<!--CR-->\">\r\n"
        " <!ENTITY tab \"&#x0009;<!--TAB-->\">\r\n <!ELEMENT profile (list*, item*)*>\r\n"
        "  <!ELEMENT list (list?, item?)*>\r\n  <!ATTLIST list name CDATA #REQUIRED>\r\n"
        "   <!ELEMENT item (#PCDATA)>\r\n   <!ATTLIST item name CDATA #REQUIRED>\r\n"
        "   <!ATTLIST item xml:space (default|preserve) \"preserve\"> ]>\r\n<!-- DATA -->\r\n<profile>\r\n";
    for (const Group& group : settings.groups)
    {
        Add(text, {" <list name=\"", group.name, "\">\r\n"});
        for (const Section& section : group.sections)
        {
            Add(text, {"  <list name=\"", section.name, "\">\r\n"});
            for (const Leaf& leaf : section.leaves)
                Add(text, {"   <item name=\"", leaf.name, "\">", Masked(leaf.value), "</item>\r\n"});
            text += "  </list>\r\n";
        }
        text += " </list>\r\n";
    }
    return text += "</profile>\r\n";
}

std::string XmlText(const Settings& settings)
{
    return Utf16(XmlTextUtf8(settings));
}

std::string IniText(const Settings& settings)
{
    std::string text;
    for (const Group& group : settings.groups)
    {
        for (const Section& section : group.sections)
        {
            Add(text, {"[", group.name, "/", section.name, "]\n"});
            for (const Leaf& leaf : section.leaves)
                Add(text, {leaf.name, "=", leaf.value, "\n"});
            text += "\n";
        }
    }
    return text;
}

} // namespace bench
