#include "text/locale_code_pages.h"

#include <winnls.h>

#include <unicode/uloc.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "base/fork_gate.h"

namespace qxplatform
{

namespace
{

constexpr CodePages kUnicodeOnly{CP_ACP, CP_OEMCP};

// Keyed by a prefix of the locale's name; the longest matching row is used.
struct ByName
{
    std::string_view beginning;
    CodePages pages;
};
constexpr ByName kByName[] = {
    // Central Europe
    {"bs", {1250, 852}},
    {"cs", {1250, 852}},
    {"hr", {1250, 852}},
    {"hu", {1250, 852}},
    {"pl", {1250, 852}},
    {"ro", {1250, 852}},
    {"sk", {1250, 852}},
    {"sl", {1250, 852}},
    {"sq", {1250, 852}},
    {"sr", {1250, 852}},
    {"tk", {1250, 852}},
    // the Baltic states
    {"et", {1257, 775}},
    {"lt", {1257, 775}},
    {"lv", {1257, 775}},
    // Turkic languages in Latin script
    {"az", {1254, 857}},
    {"tr", {1254, 857}},
    {"uz", {1254, 857}},
    {"vi", {1258, 1258}},
    // locales with American console pages
    {"en-029", {1252, 850}},
    {"en-IN", {1252, 437}},
    {"en-MY", {1252, 437}},
    {"en-PH", {1252, 437}},
    {"en-SG", {1252, 437}},
    {"en-US", {1252, 437}},
    {"en-ZA", {1252, 437}},
    {"en-ZW", {1252, 437}},
    {"fil", {1252, 437}},
    {"ha", {1252, 437}},
    {"haw", {1252, 437}},
    {"ig", {1252, 437}},
    {"iu", {1252, 437}},
    {"la", {1252, 437}},
    {"rw", {1252, 437}},
    {"sw", {1252, 437}},
    {"yo", {1252, 437}},
    // Latin letters plus others that no page contains completely
    {"en-AE", kUnicodeOnly},
    {"mi", kUnicodeOnly},
    {"mt", kUnicodeOnly},
    {"om", kUnicodeOnly},
    {"so", kUnicodeOnly},
    {"st", kUnicodeOnly},
    {"ts", kUnicodeOnly},
    {"ve", kUnicodeOnly},
    // languages added when the system already had Unicode
    {"kk", kUnicodeOnly},
    {"ps", kUnicodeOnly},
    {"yi", kUnicodeOnly},
};

struct ByScript
{
    std::string_view script;
    CodePages pages;
};
constexpr ByScript kByScript[] = {
    {"Arab", {1256, 720}},
    {"Cyrl", {1251, 866}},
    {"Grek", {1253, 737}},
    {"Hans", {936, 936}},
    {"Hant", {950, 950}},
    {"Hebr", {1255, 862}},
    {"Jpan", {932, 932}},
    {"Kore", {949, 949}},
    {"Latn", {1252, 850}},
    {"Thai", {874, 874}},
};

std::string ScriptOf(const Locale& locale)
{
    const ForkHold hold; // no fork while ICU holds its own locks
    char likely[ULOC_FULLNAME_CAPACITY];
    char script[ULOC_SCRIPT_CAPACITY];
    UErrorCode status = U_ZERO_ERROR;
    uloc_addLikelySubtags(locale.icu.c_str(), likely, static_cast<std::int32_t>(sizeof likely), &status);
    uloc_getScript(likely, script, static_cast<std::int32_t>(sizeof script), &status);
    return U_SUCCESS(status) ? script : "";
}

// Returns true if `name` equals `beginning`, or continues with a hyphen.
bool BeginsWith(std::string_view name, std::string_view beginning)
{
    return name.substr(0, beginning.size()) == beginning &&
           (name.size() == beginning.size() || name[beginning.size()] == '-');
}

CodePages OfScript(const std::string& script)
{
    for (const ByScript& row : kByScript)
        if (row.script == script)
            return row.pages;
    // For a language that it doesn't know, ICU returns Latin script or none. Both select the Latin pages.
    return script.empty() ? CodePages{1252, 850} : kUnicodeOnly;
}

} // namespace

CodePages CodePagesOf(const Locale& locale)
{
    if (locale.icu.empty())
        return {1252, 437};
    const std::string script = ScriptOf(locale);
    CodePages pages = OfScript(script);
    // Cyrillic in South-east Europe has its own console page.
    if (script == "Cyrl" && (BeginsWith(locale.name, "sr") || BeginsWith(locale.name, "bs")))
        pages.oem = 855;
    const bool isLatin = script == "Latn";
    std::size_t longest = 0;
    for (const ByName& row : kByName)
    {
        const bool counts = isLatin || row.pages.ansi == CP_ACP;
        if (counts && row.beginning.size() > longest && BeginsWith(locale.name, row.beginning))
        {
            pages = row.pages;
            longest = row.beginning.size();
        }
    }
    return pages;
}

LGRPID LanguageGroupOf(const Locale& locale)
{
    switch (CodePagesOf(locale).ansi)
    {
    case 1250:
        return LGRPID_CENTRAL_EUROPE;
    case 1257:
        return LGRPID_BALTIC;
    case 1253:
        return LGRPID_GREEK;
    case 1251:
        return LGRPID_CYRILLIC;
    case 1254:
        return LGRPID_TURKIC;
    case 932:
        return LGRPID_JAPANESE;
    case 949:
        return LGRPID_KOREAN;
    case 950:
        return LGRPID_TRADITIONAL_CHINESE;
    case 936:
        return LGRPID_SIMPLIFIED_CHINESE;
    case 874:
        return LGRPID_THAI;
    case 1255:
        return LGRPID_HEBREW;
    case 1256:
        return LGRPID_ARABIC;
    case 1258:
        return LGRPID_VIETNAMESE;
    case CP_ACP:
        break;
    default:
        return LGRPID_WESTERN_EUROPE;
    }
    // Without a code page, the script decides.
    const std::string script = ScriptOf(locale);
    if (script == "Geor")
        return LGRPID_GEORGIAN;
    if (script == "Armn")
        return LGRPID_ARMENIAN;
    return script == "Latn"   ? LGRPID_WESTERN_EUROPE
           : script == "Cyrl" ? LGRPID_CYRILLIC
           : script == "Hebr" ? LGRPID_HEBREW
           : script == "Arab" ? LGRPID_ARABIC
                              : LGRPID_INDIC;
}

} // namespace qxplatform
