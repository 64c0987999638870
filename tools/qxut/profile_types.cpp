#include "profile_types.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <string_view>
#include <type_traits>

namespace qxut
{

namespace
{

using nlohmann::ordered_json;

// ---- Parsing values of the command line. Each function returns false if the text is not of the type.

constexpr double kTooLarge = 1e190;

template <class Number>
bool FromText(std::string_view text, Number& value)
{
    const char* const end = text.data() + text.size();
    if constexpr (std::is_integral_v<Number>)
    {
        if (text.starts_with("0x"))
        {
            std::make_unsigned_t<Number> bits = 0;
            const auto read = std::from_chars(text.data() + 2, end, bits, 16);
            value = static_cast<Number>(bits);
            return read.ec == std::errc() && read.ptr == end;
        }
    }
    const auto read = std::from_chars(text.data(), end, value);
    if constexpr (std::is_floating_point_v<Number>)
    {
        // The library reads only a part of longer numbers, and only a digit of infinities and NaN.
        if (!(std::abs(value) < kTooLarge))
            return false;
    }
    return read.ec == std::errc() && read.ptr == end;
}

template <std::size_t Count>
bool FieldsFromText(std::string_view text, std::array<std::int32_t, Count>& fields)
{
    for (std::size_t i = 0; i < Count; ++i)
    {
        const std::size_t comma = i + 1 < Count ? text.find(',') : text.size();
        if (comma == text.npos || !FromText(text.substr(0, comma), fields[i]))
            return false;
        text.remove_prefix(std::min(comma + 1, text.size()));
    }
    return true;
}

bool FromText(std::string_view text, ProfPoint& value)
{
    std::array<std::int32_t, 2> fields;
    if (!FieldsFromText(text, fields))
        return false;
    value = {fields[0], fields[1]};
    return true;
}

bool FromText(std::string_view text, ProfRect& value)
{
    std::array<std::int32_t, 4> fields;
    if (!FieldsFromText(text, fields))
        return false;
    value = {fields[0], fields[1], fields[2], fields[3]};
    return true;
}

struct Flag
{
    using Value = std::int32_t;
    static bool FromText(std::string_view text, std::int32_t& value)
    {
        value = text == "true";
        return value != 0 || text == "false";
    }
    static ordered_json ToJson(std::int32_t value) { return value != 0; }
};

template <class Number>
struct Plain
{
    using Value = Number;
    static bool FromText(std::string_view text, Number& value) { return qxut::FromText(text, value); }
    static ordered_json ToJson(Number value) { return value; }
};

struct Point
{
    using Value = ProfPoint;
    static bool FromText(std::string_view text, ProfPoint& value) { return qxut::FromText(text, value); }
    static ordered_json ToJson(const ProfPoint& value) { return {value.x, value.y}; }
};

struct Rect
{
    using Value = ProfRect;
    static bool FromText(std::string_view text, ProfRect& value) { return qxut::FromText(text, value); }
    static ordered_json ToJson(const ProfRect& value) { return {value.left, value.top, value.right, value.bottom}; }
};

// A colour in the form #rrggbb. The library's colours have the reverse byte order.
struct Colour
{
    using Value = std::uint32_t;
    static bool FromText(std::string_view text, std::uint32_t& value)
    {
        constexpr std::size_t kLength = 7;
        std::uint32_t number = 0;
        const char* const end = text.data() + text.size();
        if (text.size() != kLength || text.front() != '#')
            return false;
        const auto read = std::from_chars(text.data() + 1, end, number, 16);
        value = Reversed(number);
        return read.ec == std::errc() && read.ptr == end;
    }
    static ordered_json ToJson(std::uint32_t value)
    {
        char text[10];
        std::snprintf(text, sizeof text, "#%06x", static_cast<unsigned>(Reversed(value)));
        return text;
    }

private:
    static std::uint32_t Reversed(std::uint32_t colour)
    {
        return (colour & 0xff) << 16 | (colour & 0xff00) | (colour >> 16 & 0xff);
    }
};

// ---- Wrappers of the library's functions, which take structures by address

template <class Kind, auto Getter>
std::int32_t Get(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, ordered_json& value)
{
    typename Kind::Value result{};
    std::int32_t code;
    if constexpr (std::is_arithmetic_v<typename Kind::Value>)
        code = Getter(job, list, path, &result, {});
    else
        code = Getter(job, list, path, &result, nullptr);
    value = Kind::ToJson(result);
    return code;
}

template <class Kind, auto Writer>
bool Write(HPROFJOB job, HPROFLIST list, const QXWCHAR* path, const std::string& text)
{
    typename Kind::Value value{};
    if (!Kind::FromText(text, value))
        return false;
    if constexpr (std::is_arithmetic_v<typename Kind::Value>)
        Writer(job, list, path, value);
    else
        Writer(job, list, path, &value);
    return true;
}

template <class Kind, auto Getter, auto Setter, auto Appender>
constexpr ValueType Row(const char* name, const char* form)
{
    return {name, form, Get<Kind, Getter>, Write<Kind, Setter>, Write<Kind, Appender>};
}

constexpr ValueType kTypes[] = {
    Row<Flag, ProfGetBoolW, ProfSetBoolW, ProfAppendBoolW>("bool", "true or false"),
    Row<Plain<std::int32_t>, ProfGetIntW, ProfSetIntW, ProfAppendIntW>("int", "a 32-bit number, decimal or like 0xff"),
    Row<Plain<std::int32_t>, ProfGetIntW, ProfSetIntHexW, ProfAppendIntHexW>(
        "int-hex", "the same, stored in hexadecimal"),
    Row<Plain<std::int64_t>, ProfGetInt64W, ProfSetInt64W, ProfAppendInt64W>(
        "int64", "a 64-bit number, decimal or like 0xff"),
    Row<Plain<std::int64_t>, ProfGetInt64W, ProfSetInt64HexW, ProfAppendInt64HexW>(
        "int64-hex", "the same, stored in hexadecimal"),
    Row<Plain<double>, ProfGetDoubleW, ProfSetDoubleW, ProfAppendDoubleW>(
        "double", "a number below 1e190, stored with six decimals"),
    Row<Point, ProfGetPointW, ProfSetPointW, ProfAppendPointW>("point", "x,y"),
    Row<Rect, ProfGetRectW, ProfSetRectW, ProfAppendRectW>("rect", "left,top,right,bottom"),
    Row<Rect, ProfGetRectLTWHW, ProfSetRectLTWHW, ProfAppendRectLTWHW>(
        "rect-ltwh", "the same, stored with width and height"),
    Row<Colour, ProfGetColorrefW, ProfSetColorrefW, ProfAppendColorrefW>("color", "#rrggbb"),
};

} // namespace

const ValueType* FindValueType(const std::string& name)
{
    const ValueType* const row =
        std::find_if(std::begin(kTypes), std::end(kTypes), [&](const ValueType& type) { return type.name == name; });
    return row != std::end(kTypes) ? row : nullptr;
}

std::vector<std::string> ValueTypeNames()
{
    std::vector<std::string> names;
    for (const ValueType& type : kTypes)
        names.push_back(type.name);
    return names;
}

std::string ValueTypeHelp()
{
    std::string help = "Values of --type, and the form of VALUE for each:\n";
    for (const ValueType& type : kTypes)
    {
        std::string name = type.name;
        name.resize(11, ' ');
        help += "  " + name + type.form + '\n';
    }
    return help;
}

std::string ValueText(const ordered_json& value)
{
    if (value.is_string())
        return value.get<std::string>();
    if (!value.is_array())
        return value.dump();
    std::string text;
    for (const ordered_json& field : value)
        text += (text.empty() ? "" : ",") + field.dump();
    return text;
}

} // namespace qxut
