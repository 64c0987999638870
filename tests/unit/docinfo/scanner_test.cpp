// Compares the scanners with the regular expressions that define the formats. The readers don't use these expressions,
// because their running time may be quadratic in the length of the text.
#include "core/pattern/regex.h"
#include "docinfo/html.h"
#include "docinfo/html_entities.h"
#include "docinfo/office_block.h"
#include "docinfo/rtf.h"
#include "locale/machine_date.h"
#include "markup/entities.h"
#include "unit/docinfo/document_in_memory.h"
#include "unit/docinfo/random_texts.h"

#include <algorithm>
#include <cstdlib>
#include <functional>

using namespace qx;
using namespace qxtest;

namespace
{

constexpr std::uint32_t kHeadFlags = 0x40428; // CASELESS, DOTALL, MULTILINE, UNGREEDY
constexpr std::uint32_t kItemFlags = 0x40028; // CASELESS, DOTALL, UNGREEDY

// Returns the number of the digits in the given base, limited to the largest signed 32-bit number.
wchar_t NumberOf(const String& digits, int base)
{
    const std::string narrow(digits.View().begin(), digits.View().end());
    return static_cast<wchar_t>(std::min<long long>(std::strtoll(narrow.c_str(), nullptr, base), INT32_MAX));
}

String Decoded(String text, clsRegEx& pattern, const std::function<wchar_t(const String&)>& character)
{
    clsRegExMatchList groups;
    while (pattern.Match(text, &groups))
    {
        const wchar_t c = character(groups[1].text);
        text.Replace(groups[0].text, c != 0 ? String(std::wstring_view(&c, 1)) : String());
    }
    return text;
}

void DropLineEnds(String& text)
{
    text.Replace(L'\r', 0);
    text.Replace(L'\n', 0);
}

namespace patterns
{

String DecodeEntities(String text, bool named)
{
    static clsRegEx number(L"&#(x[A-Fa-f0-9]{2,4}|\\d+);", kHeadFlags);
    for (std::size_t i = 0; named && i < 96; ++i)
        text.Replace(String(kHtmlEntities[i].text), String(std::wstring_view(&kHtmlEntities[i].code, 1)));
    DropLineEnds(text);
    return Decoded(text, number,
        [](const String& group)
        {
            const bool isHex = group.CharAt(0) == L'x';
            return NumberOf(isHex ? group.Mid(1) : group, isHex ? 16 : 10);
        });
}

void ParseOfficeProperties(clsDocu& record, String text)
{
    static clsRegEx element(L"<o:(.*)>(.*)</o:\\1>", kHeadFlags);
    clsRegExMatchList groups;
    while (element.Match(text, &groups))
    {
        const String key = groups[1].text, value = groups[2].text;
        for (const auto& [name, field] :
            {std::pair(L"Subject", &record.Subject), {L"Author", &record.Author}, {L"LastAuthor", &record.LastAuthor},
                {L"Keywords", &record.Keywords}, {L"Description", &record.Comments}})
            if (key == name)
                clsDocu::SetText(*field, value);
        for (const auto& [name, field] : {std::pair(L"Created", &record.Created), {L"LastSaved", &record.LastSaved}})
            if (key == name)
            {
                *field = kNoTime;
                ReadISO8601Date(value.View(), *field);
            }
        text.Replace(groups[0].text, String());
    }
}

void ReadHTML(clsDocu& record, const String& page)
{
    static clsRegEx head(L"<head>(.*)</head>", kHeadFlags), title(L"<title>(.*)</title>", kItemFlags);
    static clsRegEx office(L"<o:DocumentProperties>(.*)</o:DocumentProperties>", kItemFlags);
    static clsRegEx author(LR"x(<meta\s+name="author"\s+content="(.*)">)x", kItemFlags);
    static clsRegEx comments(LR"x(<meta\s+name="(?:description|DC\.Description)"\s+content="(.*)">)x", kItemFlags);
    static clsRegEx subject(LR"x(<meta\s+name="DC\.Subject"\s+content="(.*)">)x", kItemFlags);
    static clsRegEx keywords(LR"x(<meta\s+name="(?:keywords|DC\.Subject\.Keywords)"\s+content="(.*)">)x", kItemFlags);
    clsRegExMatchList groups;
    if (!head.Match(page, &groups))
        return;
    const String text = DecodeEntities(groups[1].text, true);
    if (title.Match(text, &groups))
        clsDocu::SetText(record.Title, groups[1].text);
    if (office.Match(text, &groups))
    {
        ParseOfficeProperties(record, groups[1].text);
        return;
    }
    const std::pair<clsRegEx&, clsVariant&> fields[] = {
        {author, record.Author}, {comments, record.Comments}, {subject, record.Subject}, {keywords, record.Keywords}};
    for (const auto& [pattern, field] : fields)
        if (pattern.Match(text, &groups))
            clsDocu::SetText(field, groups[1].text);
}

String DecodeRTF(String text)
{
    static clsRegEx character(LR"(\\'([A-Fa-f0-9]{2,2}))", kHeadFlags);
    DropLineEnds(text);
    text = Decoded(text, character, [](const String& group) { return NumberOf(group, 16); });
    text.Replace(String(LR"(\\)"), String(LR"(\)"));
    return text;
}

SYSTEMTIME ParseRTFDate(String text)
{
    static clsRegEx word(LR"(\\([a-z]+)(\d+))", 0);
    SYSTEMTIME date = kNoTime;
    clsRegExMatchList groups;
    while (word.Match(text, &groups))
    {
        const String key = groups[1].text;
        const auto number = static_cast<WORD>(NumberOf(groups[2].text, 10));
        for (const auto& [name, part] : {std::pair(L"yr", &date.wYear), {L"mo", &date.wMonth}, {L"dy", &date.wDay},
                 {L"hr", &date.wHour}, {L"min", &date.wMinute}})
            if (key == name)
                *part = number;
        text.Replace(groups[0].text, String());
    }
    return date;
}

void ReadRTF(clsDocu& record, const String& document)
{
    static clsRegEx info(LR"(\{\\info((\{\\([a-z]+)((?:\s|\d|\\).*)\s*\}\s*)+)\s*\})", kItemFlags);
    static clsRegEx group(LR"(\{\\([a-z]+)((?:\s|\d|\\).*)\s*\})", kItemFlags);
    String text = document;
    DropLineEnds(text);
    clsRegExMatchList groups;
    if (!info.Match(text, &groups))
        return;
    text = DecodeRTF(groups[1].text);
    while (group.Match(text, &groups))
    {
        const String key = groups[1].text, value = groups[2].text;
        for (const auto& [name, field] : {std::pair(L"subject", &record.Subject), {L"author", &record.Author},
                 {L"title", &record.Title}, {L"keywords", &record.Keywords}})
            if (key == name)
                clsDocu::SetText(*field, DecodeRTF(value));
        for (const auto& [name, date] : {std::pair(L"creatim", &record.Created), {L"revtim", &record.LastSaved}})
            if (key == name)
                *date = ParseRTFDate(DecodeRTF(value));
        if (key == L"doccomm")
            clsDocu::SetText(record.Comments, value);
        text.Replace(groups[0].text, String());
    }
}

} // namespace patterns

constexpr std::string_view kHtmlPieces[] = {"<title>", "</title>", "<TITLE>", "<meta name=\"author\" content=\"",
    "<meta  name=\"dc.subject\"\tcontent=\"", "<META NAME=\"keywords\" CONTENT=\"",
    "<meta name=\"Description\" content=\"", "name=\"author\"", "<meta ", "\">", "\"", ">", "a", "&#", "&#x", ";",
    "&#38;", "#65;", "&#x3b;", "&#x3C;", "&#X41;", "&#0;", "&nbsp;", "&auml;", "&amp;", "&#9999999999;", "\r\n",
    "</head>", "<head>", " ", "4", "\xE4"};

constexpr std::string_view kOfficePieces[] = {"<o:", "</o:", ">", "<o:Author>", "</o:Author>", "</O:AUTHOR>",
    "<o:Subject>b</o:Subject>", "<o:Keywords>", "</o:Keywords>", "<o:Created>2001-02-03T04:05:06Z</o:Created>",
    "<o:LastSaved>", "2018-04-03T10:00:00Z", "</o:LastSaved>", "<o:Description>c</o:Description>",
    "<o:author>x</o:author>", "Author", "a", "<", "</o", ":Author>", "<o:>", "</o:>"};

constexpr std::string_view kRtfPieces[] = {"{\\title ", "{\\Title ", "{\\author ", "{\\subject\\a", "{\\keywords 1",
    "{\\doccomm ", "{\\creatim\\yr2001\\mo2", "\\dy3\\hr4}", "{\\revtim\\min5", "}", "} ", "{", "\\", "{\\info",
    "{\\x }", "\\'", "\\'41", "\\'5c", "\\'7D", "\\'00", "'4", "1", "e4", "\\\\", " ", "\n", "\\yr1", "\\yr12", "title",
    "a"};

} // namespace

TEST(Scanners, HtmlHeadAndRtfInfo)
{
    constexpr std::size_t kMostPieces = 24; // the pattern of the block takes quadratic time
    CompareReaders(ReadHTML, patterns::ReadHTML, kHtmlPieces, "<head>%</head>");
    CompareReaders(ReadHTML, patterns::ReadHTML, kOfficePieces,
        "<head><o:DocumentProperties>%</o:DocumentProperties></head>", kMostPieces);
    CompareReaders(ReadRTF, patterns::ReadRTF, kRtfPieces, "{\\rtf1{\\info{\\title t}%}}");
}

TEST(Scanners, Decoders)
{
    RandomTexts html(kHtmlPieces), rtf(kRtfPieces);
    for (int i = 0; i < kTexts; ++i)
    {
        const String page = Wide(html.Next()), document = Wide(rtf.Next());
        const bool named = i % 2 != 0;
        ASSERT_TRUE(DecodeEntities(page.View(), named) == patterns::DecodeEntities(page, named).View())
            << page.NarrowText();
        ASSERT_TRUE(DecodeRTF(document.View()) == patterns::DecodeRTF(document).View()) << document.NarrowText();
    }
}
