#include "text/locale.h"

#include <winnls.h>
#include <winnt.h>

#include <unicode/uloc.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <map>
#include <mutex>
#include <optional>

#include "base/forever.h"
#include "text/posix_locale.h"

namespace qxplatform
{

namespace
{

struct NamedLocale
{
    LCID lcid;
    const char* name;
    const char* icu;
};

// Locales for which ICU's conversion between name and identifier differs from the system.
constexpr NamedLocale kNamedApart[] = {
    {0x0404, "zh-TW", "zh_Hant_TW"},
    {0x040a, "es-ES_tradnl", "es_ES@collation=traditional"},
    {0x0467, "ff-Latn-NG", "ff_Latn_NG"},
    {0x046b, "quz-BO", "qu_BO"},
    {0x0471, "kr-Latn-NG", "kr_Latn_NG"},
    {0x0476, "la-VA", "la_VA"},
    {0x0486, "quc-Latn-GT", "quc_GT"},
    {0x048c, "prs-AF", "fa_AF"},
    {0x0492, "ku-Arab-IQ", "ckb_IQ"},
    {0x0803, "ca-ES-valencia", "ca_ES_VALENCIA"},
    {0x0804, "zh-CN", "zh_Hans_CN"},
    {0x086b, "quz-EC", "qu_EC"},
    {0x0c04, "zh-HK", "zh_Hant_HK"},
    {0x0c6b, "quz-PE", "qu_PE"},
    {0x1004, "zh-SG", "zh_Hans_SG"},
    {0x1404, "zh-MO", "zh_Hant_MO"},
    {0x4c09, "en-AE", "en_AE"},
    // alternate sort orders
    {0x00010407, "de-DE_phoneb", "de_DE@collation=phonebook"},
    {0x0001040e, "hu-HU_technl", "hu_HU@collation=standard"},
    {0x00010437, "ka-GE_modern", "ka_GE@collation=standard"},
    {0x00020804, "zh-CN_stroke", "zh_Hans_CN@collation=stroke"},
    {0x00021004, "zh-SG_stroke", "zh_Hans_SG@collation=stroke"},
    {0x00021404, "zh-MO_stroke", "zh_Hant_MO@collation=stroke"},
    {0x00030404, "zh-TW_pronun", "zh_Hant_TW@collation=zhuyin"},
    {0x00040404, "zh-TW_radstr", "zh_Hant_TW@collation=unihan"},
    {0x00040411, "ja-JP_radstr", "ja_JP@collation=unihan"},
};

constexpr LCID kAmericanEnglish = MAKELCID(MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US), SORT_DEFAULT);

const Locale& InvariantLocale()
{
    static constinit Forever<Locale> locale;
    return locale.Get([] { return Locale{"", "", static_cast<LCID>(LOCALE_INVARIANT)}; });
}

// Replaces a default locale of ICU that is too long. ICU takes it from the environment too, and copies its name,
// whatever its length, into a buffer of fixed size when it looks for a locale without data.
void BoundDefaultOfIcu()
{
    static constinit Forever<bool> isBounded;
    isBounded.Get(
        []
        {
            UErrorCode status = U_ZERO_ERROR;
            if (std::strlen(uloc_getDefault()) >= ULOC_FULLNAME_CAPACITY)
                uloc_setDefault("en_US", &status);
            return U_SUCCESS(status) != 0;
        });
}

// Calls an ICU function that returns a name. All locales are created through such calls, and no ICU data is read before
// a locale is created, so this is the place to bound ICU's default.
template <class Call>
std::string Text(Call call)
{
    BoundDefaultOfIcu();
    char buffer[ULOC_FULLNAME_CAPACITY];
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t length = call(buffer, static_cast<std::int32_t>(sizeof buffer), &status);
    return U_SUCCESS(status) && length < static_cast<std::int32_t>(sizeof buffer) ? std::string(buffer) : std::string();
}

std::string Part(const std::string& icu, std::int32_t (*part)(const char*, char*, std::int32_t, UErrorCode*))
{
    return Text(
        [&](char* buffer, std::int32_t size, UErrorCode* status) { return part(icu.c_str(), buffer, size, status); });
}

// Returns true if ICU has the language: then its English name for it is not just the code.
bool IsKnownLanguage(const std::string& icu)
{
    const std::string language = Part(icu, uloc_getLanguage);
    UChar name[64];
    UErrorCode status = U_ZERO_ERROR;
    uloc_getDisplayLanguage(language.c_str(), "en", name, std::size(name), &status);
    return !language.empty() && U_SUCCESS(status) && status != U_USING_DEFAULT_WARNING;
}

std::string WithRegion(const std::string& icu)
{
    if (!Part(icu, uloc_getCountry).empty())
        return icu;
    const std::string likely = Part(icu, uloc_addLikelySubtags);
    const std::string script = Part(icu, uloc_getScript);
    return Part(icu, uloc_getLanguage) + (script.empty() ? "" : "_" + script) + "_" + Part(likely, uloc_getCountry);
}

// Returns the identifier of a locale, or LOCALE_CUSTOM_UNSPECIFIED if ICU has one only for the language.
LCID NumberOf(const std::string& icu)
{
    const LCID lcid = uloc_getLCID(icu.c_str());
    const std::string back = Text([lcid](char* buffer, std::int32_t size, UErrorCode* status)
        { return uloc_getLocaleForLCID(lcid, buffer, size, status); });
    const bool sameRegion = Part(back, uloc_getCountry) == Part(icu, uloc_getCountry);
    return lcid != 0 && sameRegion ? lcid : LOCALE_CUSTOM_UNSPECIFIED;
}

std::string NameOf(const std::string& icu)
{
    const std::string base = Part(icu, uloc_getBaseName);
    return Text([&base](char* buffer, std::int32_t size, UErrorCode* status)
        { return uloc_toLanguageTag(base.c_str(), buffer, size, false, status); });
}

Locale FromIcuName(const std::string& icu)
{
    const std::string canonical = WithRegion(Part(icu, uloc_canonicalize));
    for (const NamedLocale& row : kNamedApart)
        if (canonical == row.icu || NameOf(canonical) == row.name)
            return {row.icu, row.name, row.lcid};
    return {canonical, NameOf(canonical), NumberOf(canonical)};
}

Locale FromEnvironment(const char* category)
{
    const std::string icu = IcuNameOfPosixLocale(PosixLocaleOf(category));
    return IsKnownLanguage(icu) ? FromIcuName(icu) : Locale{"en_US", "en-US", kAmericanEnglish};
}

// Cache of locales, because callers receive pointers to them.
template <class Key>
class KnownLocales
{
public:
    template <class Make>
    const Locale* Get(const Key& key, Make make)
    {
        const std::lock_guard lock(_mutex);
        auto entry = _locales.find(key);
        if (entry == _locales.end())
        {
            std::optional<Locale> locale = make();
            if (!locale)
                return nullptr;
            entry = _locales.emplace(key, std::move(*locale)).first;
        }
        return &entry->second;
    }

private:
    Mutex _mutex;
    std::map<Key, Locale> _locales; // elements don't move
};

std::optional<Locale> MakeByNumber(LCID lcid)
{
    for (const NamedLocale& row : kNamedApart)
        if (row.lcid == lcid)
            return Locale{row.icu, row.name, row.lcid};
    const std::string icu = Text([lcid](char* buffer, std::int32_t size, UErrorCode* status)
        { return uloc_getLocaleForLCID(lcid, buffer, size, status); });
    // For an unknown region of a known language ICU returns the language alone; likewise for an unknown sort order.
    const bool isRegion = SUBLANGID(lcid) != SUBLANG_NEUTRAL && SORTIDFROMLCID(lcid) == SORT_DEFAULT;
    const bool isUnknownRegion = isRegion && Part(icu, uloc_getCountry).empty();
    if (icu.empty() || isUnknownRegion || !IsKnownLanguage(icu))
        return std::nullopt;
    Locale locale = FromIcuName(icu);
    if (SUBLANGID(lcid) != SUBLANG_NEUTRAL && LANGIDFROMLCID(locale.lcid) != LANGIDFROMLCID(lcid))
        return std::nullopt;
    if (SORTIDFROMLCID(lcid) != SORT_DEFAULT)
        locale = {icu, locale.name, lcid};
    return locale;
}

bool EqualWithoutCase(std::string_view a, std::string_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
        [](char x, char y) { return (x | 0x20) == (y | 0x20) && (x & 0x5f) == (y & 0x5f); });
}

std::optional<Locale> MakeByName(const std::string& name)
{
    for (const NamedLocale& row : kNamedApart)
        if (EqualWithoutCase(row.name, name))
            return Locale{row.icu, row.name, row.lcid};
    std::int32_t parsed = 0;
    const std::string icu = Text([&](char* buffer, std::int32_t size, UErrorCode* status)
        { return uloc_forLanguageTag(name.c_str(), buffer, size, &parsed, status); });
    if (static_cast<std::size_t>(parsed) != name.size() || !IsKnownLanguage(icu))
        return std::nullopt;
    return FromIcuName(icu);
}

} // namespace

const Locale& UserLocale()
{
    static constinit Forever<Locale> locale;
    return locale.Get([] { return FromEnvironment("LC_TIME"); });
}

const Locale& UserInterfaceLocale()
{
    static constinit Forever<Locale> locale;
    return locale.Get([] { return FromEnvironment("LC_MESSAGES"); });
}

const Locale* FindLocale(LCID lcid)
{
    switch (lcid)
    {
    case LOCALE_NEUTRAL:
    case LOCALE_USER_DEFAULT:
    case LOCALE_SYSTEM_DEFAULT:
    case LOCALE_CUSTOM_DEFAULT:
    case LOCALE_CUSTOM_UNSPECIFIED:
        return &UserLocale();
    case LOCALE_CUSTOM_UI_DEFAULT:
        return &UserInterfaceLocale();
    case LOCALE_INVARIANT:
        return &InvariantLocale();
    default:
        static constinit Forever<KnownLocales<LCID>> known;
        return known.Get().Get(lcid, [lcid] { return MakeByNumber(lcid); });
    }
}

const Locale* FindLocale(std::string_view name)
{
    if (name.empty())
        return &InvariantLocale();
    if (name == "!x-sys-default-locale")
        return &UserLocale();
    const std::string key(name);
    static constinit Forever<KnownLocales<std::string>> known;
    return known.Get().Get(key, [&key] { return MakeByName(key); });
}

const Locale* FindLocale(const wchar_t* name)
{
    if (name == LOCALE_NAME_USER_DEFAULT)
        return &UserLocale();
    char ascii[LOCALE_NAME_MAX_LENGTH];
    std::size_t length = 0;
    for (; name[length] != 0; ++length)
    {
        if (length == std::size(ascii) || name[length] >= 0x80)
            return nullptr;
        ascii[length] = static_cast<char>(name[length]);
    }
    return FindLocale(std::string_view(ascii, length));
}

} // namespace qxplatform
