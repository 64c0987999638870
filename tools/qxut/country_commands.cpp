#include "country_commands.h"

#include "failure.h"
#include "text.h"
#include "variant.h"

#include <qxut23/bstr.h>
#include <qxut23/countries.h>
#include <qxut23/iso_countries.h>

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
    std::vector<std::string> names;
    bool asJson = false;
};

struct LanguageOptions
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

// Returns all values of UtilLocGetCountryInfo. Empty if there is no such country.
ordered_json ValuesByName(const std::string& country)
{
    const WideText name(country);
    ordered_json values = ordered_json::object();
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

// Returns the data of the country with this ISO 3166-1 code or English name, completed with the system's locale data.
// Empty if there is no such country.
ordered_json ValuesByCode(const std::string& code)
{
    QxCountry country{};
    country.size = sizeof country;
    if (QxGetCountryByCode(WideText(code), &country) != QXUT_ISO_COUNTRY_OK)
        return {};
    ordered_json values = {{"name", Utf8(country.name)}, {"official-name", Utf8(country.officialName)},
        {"native-name", Utf8(country.nativeName)}, {"iso3166", Utf8(country.alpha2)}, {"alpha-3", Utf8(country.alpha3)},
        {"numeric", Utf8(country.numeric)}};
    // ValuesByName may find another country with the same name, so its values are used only if the codes match.
    const ordered_json others = ValuesByName(values["alpha-3"]);
    const std::string iso3166 = others.value("iso3166", "");
    const bool isSame = iso3166 == values["iso3166"] || iso3166 == values["alpha-3"];
    const auto add = [&](const char* name)
    {
        if (isSame && others.contains(name))
            values[name] = others[name];
    };
    add("lcid");
    if (country.callingCode != 0)
        values["calling-code"] = country.callingCode;
    if (country.currency[0] != 0)
        values["currency-code"] = Utf8(country.currency);
    add("currency");
    add("code-page");
    return values;
}

std::string AsText(const ordered_json& value)
{
    return value.is_string() ? Shown(value.get<std::string>()) : value.dump();
}

// A plus sign selects calling codes. Everything else is first looked up as an ISO 3166-1 code or name.
ordered_json ValuesOf(const std::string& name)
{
    if (name.starts_with('+'))
        return ValuesByName(name.substr(1));
    ordered_json values = ValuesByCode(name);
    return values.empty() ? ValuesByName(name) : values;
}

// Prints a line of JSON for each country, or its values as text, with blank lines between countries.
void ShowCountries(const CountryOptions& options)
{
    std::vector<ordered_json> countries;
    for (const std::string& name : options.names)
        if (countries.push_back(ValuesOf(name)); countries.back().empty())
            throw Failure(kNotFound, "unknown country '" + Shown(name) + "'");
    for (std::size_t i = 0; i < countries.size(); ++i)
    {
        if (options.asJson)
        {
            std::cout << JsonText(countries[i]) << '\n';
            continue;
        }
        if (i != 0)
            std::cout << '\n';
        for (const auto& [name, value] : countries[i].items())
            std::cout << name << " = " << AsText(value) << '\n';
    }
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
        std::cout << JsonText(keys) << '\n';
    else
        for (const std::string& key : keys)
            std::cout << key << '\n';
}

void ShowLanguage(const LanguageOptions& options)
{
    Variant value;
    UtilLocGetLanguageInfo(WideText(options.name), QXUT_LANGUAGE_LCID, value.Address());
    if (value.Number() == 0)
        throw Failure(kNotFound, "unknown language '" + Shown(options.name) + "'");
    if (options.asJson)
        std::cout << JsonText({{"language", options.name}, {"lcid", value.Number()}}) << '\n';
    else
        std::cout << value.Number() << '\n';
}

} // namespace

void AddCountryCommands(CLI::App& program)
{
    const auto options = std::make_shared<CountryOptions>();

    CLI::App* const country =
        program.add_subcommand("country", "print the data of countries, or the list of all countries");
    country->add_option("name", options->names,
        "ISO 3166 codes of countries (two letters, three letters or three digits) or English names; failing these, any "
        "other name: in the country's own language, a calling code (+49), the code of its vehicles, a language tag");
    country->add_flag("--json", options->asJson, "print JSON, one line for each country");
    country->callback([options] { options->names.empty() ? ShowKeys(*options) : ShowCountries(*options); });

    const auto languageOptions = std::make_shared<LanguageOptions>();
    CLI::App* const language = program.add_subcommand("language", "print the locale identifier (LCID) of a language");
    language->add_option("name", languageOptions->name, "a language tag or code: de-AT, de")->required();
    language->add_flag("--json", languageOptions->asJson, "print JSON");
    language->callback([languageOptions] { ShowLanguage(*languageOptions); });
}

} // namespace qxut
