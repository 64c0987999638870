#include "text/language_supplement.h"

namespace qxplatform
{

namespace
{

constexpr LanguageSupplement kSupplements[] = {
    {.language = "co",
        .days = {u"luni", u"marti", u"mercuri", u"ghjovi", u"venneri", u"sabbatu", u"dumenica"},
        .months = {u"ghjennaghju", u"ferraghju", u"marzu", u"aprile", u"maghju", u"ghjugnu", u"lugliu", u"aostu",
            u"sittembre", u"ottobre", u"nuvembre", u"dicembre"},
        .ofMonth = {u"di ", u"d’"},
        .decimalSeparator = u",",
        .longDate = u"dddd d MMMM 'di' 'u' yyyy",
        .shortDate = u"dd/MM/yyyy",
        .region = u"Francia"},
    {.language = "dv", .longDate = u"dddd d MMMM yyyy"},
    {.language = "gn",
        .days = {u"Arakõi", u"Araapy", u"Ararundy", u"Arapo", u"Arapoteĩ", u"Arapokõi", u"Arateĩ"},
        .months = {u"Jasyteĩ", u"Jasykõi", u"Jasyapy", u"Jasyrundy", u"Jasypo", u"Jasypoteĩ", u"Jasypokõi",
            u"Jasypoapy", u"Jasyporundy", u"Jasypa", u"Jasypateĩ", u"Jasypakõi"},
        .decimalSeparator = u",",
        .region = u"Paraguai"},
    {.language = "iu_Cans",
        .days = {u"ᓇᒡᒐᔾᔭᐅ", u"ᓇᒡᒐᔾᔭᐅᓕᖅᑭ", u"ᐱᖓᑦᓯᖅ", u"ᓯᑕᒻᒥᖅ", u"ᑕᓪᓕᒻᒥᐅᑦ", u"ᓈᑦᓰᖑᔭᓛᕐᓂᐊᖅ", u"ᓈᑦᑏᖑᔭᖅ"},
        .months = {u"ᔭᓐᓄᐊᓕ", u"ᕕᕝᕗᐊᓕ", u"ᒫᑦᓯ", u"ᐊᐃᑉᐳᓗ", u"ᒪᐃ", u"ᔫᓂ", u"ᔪᓚᐃ", u"ᐊᐅᒡᒍᓯ", u"ᓯᑎᐱᕆ", u"ᐆᑦᑑᕝᕙ", u"ᓄᕕᐱᕆ",
            u"ᑎᓯᐱᕆ"},
        .halves = {u"am", u"pm"},
        .longDate = u"dddd, MMMM d, yyyy",
        .shortDate = u"MM/dd/yyyy",
        .time = u"h:mm:ss tt",
        .region = u"ᑲᓇᑕᒥ"},
    {.language = "kl", .halves = {u"u.t.", u"u.k."}, .longDate = u"dddd dd MMMM yyyy"},
    {.language = "la",
        .days = {u"dies Lunae", u"dies Martis", u"dies Mercurii", u"dies Iovis", u"dies Veneris", u"dies Saturni",
            u"dies Solis"},
        .months = {u"Ianuarius", u"Februarius", u"Martius", u"Aprilis", u"Maius", u"Iunius", u"Iulius", u"Augustus",
            u"September", u"October", u"November", u"December"},
        .halves = {u"a.m.", u"p.m."},
        .decimalSeparator = u",",
        .region = u"Civitas Vaticana"},
    {.language = "nso",
        .days = {u"Musopologo", u"Labobedi", u"Laboraro", u"Labone", u"Labohlano", u"Mokibelo", u"Lamorena"},
        .months = {u"Pherekgong", u"Dibokwane", u"Hlakola", u"Moranang", u"Mopitlo", u"Phupu", u"Mosegemanye", u"Phato",
            u"Lewedi", u"Diphalane", u"Dibatsela", u"Manthole"},
        .region = u"Afrika Borwa"},
    {.language = "oc",
        .days = {u"diluns", u"dimars", u"dimècres", u"dijòus", u"divendres", u"dissabte", u"dimenge"},
        .months = {u"genièr", u"febrièr", u"març", u"abril", u"mai", u"junh", u"julhet", u"agost", u"setembre",
            u"octòbre", u"novembre", u"decembre"},
        .ofMonth = {u"de ", u"d’"},
        .decimalSeparator = u",",
        .longDate = u"dddd d MMMM 'de' yyyy",
        .shortDate = u"dd/MM/yyyy",
        .region = u"França"},
    {.language = "st",
        .days = {u"Mmantaha", u"Labobedi", u"Laboraru", u"Labone", u"Labohlane", u"Moqebelo", u"Sontaha"},
        .months = {u"Phesekgong", u"Hlakola", u"Hlakubele", u"Mmese", u"Motsheanong", u"Phupjane", u"Phupu", u"Phata",
            u"Leotshe", u"Mphalane", u"Pundungwane", u"Tshitwe"},
        .decimalSeparator = u","},
    {.language = "syr",
        .days = {u"ܬܪܝܢܒܫܒܐ", u"ܬܠܬܒܫܒܐ", u"ܐܪܒܥܒܫܒܐ", u"ܚܡܫܒܫܒܐ", u"ܥܪܘܒܬܐ", u"ܫܒܬܐ", u"ܚܕܒܫܒܐ"},
        .months = {u"ܟܢܘܢ ܐܚܪܝܐ", u"ܫܒܛ", u"ܐܕܪ", u"ܢܝܣܢ", u"ܐܝܪ", u"ܚܙܝܪܢ", u"ܬܡܘܙ", u"ܐܒ", u"ܐܝܠܘܠ", u"ܬܫܪܝܢ ܩܕܡܝܐ",
            u"ܬܫܪܝܢ ܐܚܪܝܐ", u"ܟܢܘܢ ܩܕܡܝܐ"},
        .halves = {u"ܩܛ", u"ܒܛ"},
        .longDate = u"dddd، d MMMM yyyy",
        .shortDate = u"d\u200f/M\u200f/yyyy",
        .time = u"h:mm:ss tt",
        .region = u"ܣܘܪܝܐ"},
    {.language = "tn",
        .days = {u"Mosopulogo", u"Labobedi", u"Laboraro", u"Labone", u"Labotlhano", u"Matlhatso", u"Tshipi"},
        .months = {u"Ferikgong", u"Tlhakole", u"Mopitlo", u"Moranang", u"Motsheganang", u"Seetebosigo", u"Phukwi",
            u"Phatwe", u"Lwetse", u"Diphalane", u"Ngwanatsele", u"Sedimonthole"}},
    {.language = "ts",
        .days = {u"Musumbhunuku", u"Ravumbirhi", u"Ravunharhu", u"Ravumune", u"Ravuntlhanu", u"Mugqivela", u"Sonta"},
        .months = {u"Sunguti", u"Nyenyenyani", u"Nyenyankulu", u"Dzivamisoko", u"Mudyaxihi", u"Khotavuxika",
            u"Mawuwani", u"Mhawuri", u"Ndzhati", u"Nhlangula", u"Hukuri", u"N’wendzamhala"},
        .decimalSeparator = u","},
    {.language = "ve",
        .days = {u"Musumbuluwo", u"Ḽavhuvhili", u"Ḽavhuraru", u"Ḽavhuṋa", u"Ḽavhuṱanu", u"Mugivhela", u"Swondaha"},
        .months = {u"Phando", u"Luhuhi", u"Ṱhafamuhwe", u"Lambamai", u"Shundunthule", u"Fulwi", u"Fulwana", u"Ṱhangule",
            u"Khubvumedzi", u"Tshimedzi", u"Ḽara", u"Nyendavhusiku"},
        .decimalSeparator = u","},
};

constexpr LanguageSupplement kNone;

// "iu" and "iu_Cans" match iu_Cans_CA, "i" doesn't.
bool IsLanguageOf(std::string_view language, std::string_view locale)
{
    return locale.starts_with(language) && (locale.size() == language.size() || locale[language.size()] == '_');
}

} // namespace

const LanguageSupplement& SupplementOf(const Locale& locale)
{
    for (const LanguageSupplement& row : kSupplements)
        if (IsLanguageOf(row.language, locale.icu))
            return row;
    return kNone;
}

} // namespace qxplatform
