#include "text/language_supplement.h"

#include <string_view>

namespace qxplatform
{

namespace
{

constexpr LanguageSupplement SUPPLEMENTS[] = {
    {"co", {u"luni", u"marti", u"mercuri", u"ghjovi", u"venneri", u"sabbatu", u"dumenica"},
        {u"ghjennaghju", u"ferraghju", u"marzu", u"aprile", u"maghju", u"ghjugnu", u"lugliu", u"aostu", u"sittembre",
            u"ottobre", u"nuvembre", u"dicembre"},
        u",", u"dddd d MMMM 'di' 'u' yyyy", u"dd/MM/yyyy"},
    {"la",
        {u"dies Lunae", u"dies Martis", u"dies Mercurii", u"dies Iovis", u"dies Veneris", u"dies Saturni",
            u"dies Solis"},
        {u"Ianuarius", u"Februarius", u"Martius", u"Aprilis", u"Maius", u"Iunius", u"Iulius", u"Augustus", u"September",
            u"October", u"November", u"December"},
        u",", nullptr, nullptr},
    {"oc", {u"diluns", u"dimars", u"dimècres", u"dijòus", u"divendres", u"dissabte", u"dimenge"},
        {u"genièr", u"febrièr", u"març", u"abril", u"mai", u"junh", u"julhet", u"agost", u"setembre", u"octobre",
            u"novembre", u"decembre"},
        u",", u"dddd d MMMM 'de' yyyy", u"dd/MM/yyyy"},
    {"tn", {u"Mosopulogo", u"Labobedi", u"Laboraro", u"Labone", u"Labotlhano", u"Matlhatso", u"Tshipi"},
        {u"Ferikgong", u"Tlhakole", u"Mopitlo", u"Moranang", u"Motsheganang", u"Seetebosigo", u"Phukwi", u"Phatwe",
            u"Lwetse", u"Diphalane", u"Ngwanatsele", u"Sedimonthole"},
        nullptr, nullptr, nullptr},
};

} // namespace

const LanguageSupplement* SupplementOf(const Locale& locale)
{
    const std::string_view language = std::string_view(locale.icu).substr(0, locale.icu.find('_'));
    for (const LanguageSupplement& row : SUPPLEMENTS)
        if (row.language == language)
            return &row;
    return nullptr;
}

} // namespace qxplatform
