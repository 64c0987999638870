#include "text/posix_locale.h"

#include <unicode/uloc.h>

#include "base/environment.h"

namespace qxplatform
{

namespace
{

struct ScriptModifier
{
    std::string_view modifier;
    const char* script;
};

// Modifiers that specify a script. Other modifiers (@euro, @valencia) have no effect here.
constexpr ScriptModifier kScripts[] = {{"latin", "Latn"}, {"cyrillic", "Cyrl"}, {"devanagari", "Deva"}};

// ICU copies names into buffers that hold one more character. No locale has a name that long.
constexpr std::size_t kMaxPosixLocale = ULOC_FULLNAME_CAPACITY - 1;

struct NameParts
{
    std::string_view language;
    std::string_view region;
    std::string_view encoding;
    std::string_view modifier;
};

// Truncates `text` at the first `separator` and returns the text after it.
std::string_view CutAt(std::string_view& text, char separator)
{
    const std::size_t position = text.find(separator);
    if (position == text.npos)
        return {};
    const std::string_view behind = text.substr(position + 1);
    text = text.substr(0, position);
    return behind;
}

NameParts Split(std::string_view name)
{
    NameParts parts;
    parts.modifier = CutAt(name, '@');
    parts.encoding = CutAt(name, '.');
    parts.region = CutAt(name, '_');
    parts.language = name;
    return parts;
}

} // namespace

std::string PosixLocaleOf(std::string_view category)
{
    for (const std::string_view name : {std::string_view("LC_ALL"), category, std::string_view("LANG")})
        if (std::string value = EnvironmentValue(name); !value.empty())
            return value.size() <= kMaxPosixLocale ? value : std::string();
    return {};
}

std::string_view EncodingOfPosixLocale(std::string_view posixName)
{
    return Split(posixName).encoding;
}

std::string IcuNameOfPosixLocale(std::string_view posixName)
{
    const NameParts parts = Split(posixName);
    if (parts.language == "C" || parts.language == "POSIX")
        return {};
    std::string name(parts.language);
    for (const ScriptModifier& row : kScripts)
        if (row.modifier == parts.modifier)
            name.append("_").append(row.script);
    if (!parts.region.empty())
        name.append("_").append(parts.region);
    return name;
}

} // namespace qxplatform
