#include "country_commands.h"

#include "failure.h"
#include "text.h"
#include "variant.h"

#include <qxut23/bstr.h>
#include <qxut23/countries.h>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace qxut
{

namespace
{

using nlohmann::ordered_json;

struct CountryOptions
{
    std::string name;
    bool asJson = false;
};

struct Property
{
    std::uint32_t type;
    const char* name;
    bool isNumber;
};
constexpr Property kProperties[] = {
    {QXUT_COUNTRY_ENGLISH_NAME, "name", false},
    {QXUT_COUNTRY_NATIVE_NAME, "native-name", false},
    {QXUT_COUNTRY_ISO3166, "iso3166", false},
    {QXUT_COUNTRY_LCID, "lcid", true},
    {QXUT_COUNTRY_CALLING_CODE, "calling-code", true},
    {QXUT_COUNTRY_CURRENCY, "currency", false},
    {QXUT_COUNTRY_CODE_PAGE, "code-page", true},
};

// The values that are known; none if there is no such country.
ordered_json ValuesOf(const std::string& country)
{
    const WideText name(country);
    ordered_json values;
    for (const Property& property : kProperties)
    {
        Variant value;
        UtilLocGetCountryInfo(name, property.type, value.Address());
        if (property.isNumber && value.Number() != 0)
            values[property.name] = value.Number();
        else if (!property.isNumber && !value.Text().empty())
            values[property.name] = value.Text();
    }
    return values;
}

std::string AsText(const ordered_json& value)
{
    return value.is_string() ? Shown(value.get<std::string>()) : value.dump();
}

void ShowCountry(const CountryOptions& options)
{
    const ordered_json values = ValuesOf(options.name);
    if (values.empty())
        throw Failure(kNotFound, "there is no country '" + Shown(options.name) + "'");
    if (options.asJson)
        std::cout << values.dump() << '\n';
    else
        for (const auto& [name, value] : values.items())
            std::cout << name << " = " << AsText(value) << '\n';
}

std::vector<std::string> Keys()
{
    QXWCHAR* list = nullptr;
    UtilLocGetCountryList(&list);
    const std::string text = list == nullptr ? std::string() : Utf8(list);
    SysFreeString(list);
    std::vector<std::string> keys;
    for (std::size_t begin = 0; begin < text.size();)
    {
        const std::size_t end = std::min(text.find(';', begin), text.size());
        keys.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return keys;
}

void ShowKeys(const CountryOptions& options)
{
    const std::vector<std::string> keys = Keys();
    if (options.asJson)
        std::cout << ordered_json(keys).dump() << '\n';
    else
        for (const std::string& key : keys)
            std::cout << key << '\n';
}

void ShowLanguage(const CountryOptions& options)
{
    Variant value;
    UtilLocGetLanguageInfo(WideText(options.name), QXUT_LANGUAGE_LCID, value.Address());
    if (value.Number() == 0)
        throw Failure(kNotFound, "there is no language '" + Shown(options.name) + "'");
    if (options.asJson)
        std::cout << ordered_json{{"language", options.name}, {"lcid", value.Number()}}.dump() << '\n';
    else
        std::cout << value.Number() << '\n';
}

} // namespace

void AddCountryCommands(CLI::App& program)
{
    const auto options = std::make_shared<CountryOptions>();

    CLI::App* const country = program.add_subcommand("country", "tell what is known of a country, or all countries");
    country->add_option("name", options->name,
        "Any name of the country: in English or its own language, an ISO 3166 code, a calling code, a language tag");
    country->add_flag("--json", options->asJson, "Print JSON");
    country->callback([options] { options->name.empty() ? ShowKeys(*options) : ShowCountry(*options); });

    CLI::App* const language = program.add_subcommand("language", "tell the number of a language (LCID)");
    language->add_option("name", options->name, "A tag or a code: de-AT, de")->required();
    language->add_flag("--json", options->asJson, "Print JSON");
    language->callback([options] { ShowLanguage(*options); });
}

} // namespace qxut
