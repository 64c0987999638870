// Compares the scanners of office documents with the regular expressions that define the formats.
#include "core/pattern/regex.h"
#include "docinfo/file_text.h"
#include "docinfo/html_entities.h"
#include "docinfo/office_archive.h"
#include "docinfo/office_block.h"
#include "docinfo/office_open_xml.h"
#include "docinfo/open_document.h"
#include "docinfo/xml_document.h"
#include "locale/machine_date.h"
#include "unit/docinfo/random_texts.h"

using namespace qx;
using namespace qxtest;

namespace
{

constexpr std::uint32_t kDotAll = 0x20, kUngreedy = 0x40000;

using Parse = void (*)(clsDocu& record, std::wstring_view text);

// Reads a text file instead of an archive's member.
template <Parse parse>
int ReadMember(clsDocu& record, FileWindow& file)
{
    String text;
    EXPECT_TRUE(ReadFirstText(file, text));
    parse(record, text.View());
    return 0;
}

void StoreEncoding(clsDocu& record, std::wstring_view text)
{
    if (const std::wstring_view encoding = DeclaredEncoding(text); encoding.data() != nullptr)
        clsDocu::SetText(record.Title, String(encoding));
}

struct Item
{
    clsRegEx pattern;
    std::size_t group;
    clsVariant clsDocu::*text;
    SYSTEMTIME clsDocu::*date = nullptr;
};

void TakeItem(Item& item, clsDocu& record, const String& text)
{
    clsRegExMatchList groups;
    if (!item.pattern.Match(text, &groups))
        return;
    SYSTEMTIME date;
    if (item.date == nullptr)
        clsDocu::SetText(record.*item.text, groups[item.group].text);
    else if (ReadISO8601Date(groups[item.group].text.View(), date) && date.wYear != 0)
        record.*item.date = date;
}

void OfficeOpenXmlPatterns(clsDocu& record, const String& text)
{
    static clsRegEx all(L"<cp:coreProperties\\s+.*>(.*?)</cp:coreProperties>", kDotAll | kUngreedy);
    static Item items[] = {{{L"<(dc:creator)[^>]*>(.*?)</\\1>", kDotAll}, 2, &clsDocu::Author},
        {{L"<(dcterms:created)[^>]*>(.*?)</\\1>", kDotAll}, 2, nullptr, &clsDocu::Created},
        {{L"<(dcterms:modified)[^>]*>(.*?)</\\1>", kDotAll}, 2, nullptr, &clsDocu::LastSaved},
        {{L"<(cp:lastModifiedBy)[^>]*>(.*?)</\\1>", kDotAll}, 2, &clsDocu::LastAuthor},
        {{L"<(dc:title)[^>]*>(.*?)</\\1>", kDotAll}, 2, &clsDocu::Title},
        {{L"<(dc:subject)[^>]*>(.*?)</\\1>", kDotAll}, 2, &clsDocu::Subject},
        {{L"<(cp:keywords)[^>]*>(.*?)</\\1>", kDotAll}, 2, &clsDocu::Keywords},
        {{L"<(dc:description)[^>]*>(.*?)</\\1>", kDotAll}, 2, &clsDocu::Comments}};
    clsRegExMatchList groups;
    if (all.Match(text, &groups))
        for (Item& item : items)
            TakeItem(item, record, groups[1].text);
}

String JoinedKeywords(String text)
{
    static clsRegEx keyword(L"<meta:keyword>(.*?)</meta:keyword>", 0);
    String joined;
    int count = 0;
    for (clsRegExMatchList groups; keyword.Match(text, &groups);)
    {
        joined += (count++ == 0 ? String() : String(L", ")) + groups[1].text;
        text = text.Mid(static_cast<std::size_t>(groups[0].offset) + groups[0].text.Length());
    }
    return joined;
}

void OpenDocumentPatterns(clsDocu& record, const String& text)
{
    constexpr std::uint32_t kFlags = kDotAll | kUngreedy;
    static clsRegEx all(
        L"<office:document-meta.*>.*<office:meta.*>(.*?)</office:meta>.*</office:document-meta>", kFlags);
    static clsRegEx keywords(L"<meta:keywords>(.*?)</meta:keywords>", kFlags);
    static Item items[] = {{{L"<meta:initial-creator>(.*?)</meta:initial-creator>", kFlags}, 1, &clsDocu::Author},
        {{L"<meta:creation-date>(.*?)</meta:creation-date>", kFlags}, 1, nullptr, &clsDocu::Created},
        {{L"<dc:creator>(.*?)</dc:creator>", kFlags}, 1, &clsDocu::LastAuthor},
        {{L"<dc:title>(.*?)</dc:title>", kFlags}, 1, &clsDocu::Title},
        {{L"<dc:subject>(.*?)</dc:subject>", kFlags}, 1, &clsDocu::Subject},
        {{L"<meta:keyword>(.*?)</meta:keyword>", kFlags}, 1, &clsDocu::Keywords},
        {{L"<dc:description>(.*?)</dc:description>", kFlags}, 1, &clsDocu::Comments},
        {{L"<dc:date>(.*?)</dc:date>", kFlags}, 1, nullptr, &clsDocu::LastSaved}};
    clsRegExMatchList groups, list;
    if (!all.Match(text, &groups))
        return;
    for (Item& item : items)
        TakeItem(item, record, groups[1].text);
    if (keywords.Match(groups[1].text, &list))
        clsDocu::SetText(record.Keywords, JoinedKeywords(list[1].text));
}

void EncodingPattern(clsDocu& record, const String& text)
{
    static clsRegEx encoding(LR"x(<\?xml.*\sencoding="([-a-zA-Z0-9]*?)".*\?>)x", kDotAll);
    clsRegExMatchList groups;
    if (encoding.Match(text, &groups))
        clsDocu::SetText(record.Title, groups[1].text);
}

void BlockPattern(clsDocu& record, const String& text)
{
    static clsRegEx block(L"<o:DocumentProperties>(.*)</o:DocumentProperties>", kDotAll | kUngreedy);
    clsRegExMatchList groups;
    if (block.Match(text, &groups))
        ParseOfficeProperties(record, DecodeEntities(groups[1].text.View(), false));
}

constexpr std::string_view kCorePieces[] = {"<cp:coreProperties a>", "<cp:coreProperties>", "<cp:coreProperties",
    "</cp:coreProperties>", "<dc:creator>", "<dc:creator x='1'>", "<dc:creatorX>", "</dc:creator>", "<dc:title>",
    "<dc:title/>", "</dc:title>", "<dc:subject>a</dc:subject>", "<cp:keywords>b</cp:keywords>", "<dc:description>\n",
    "</dc:description>", "<cp:lastModifiedBy>", "</cp:lastModifiedBy>", "<dcterms:created xsi:type='W3CDTF'>",
    "2001-02-03T04:05:06Z</dcterms:created>", "<dcterms:modified>0000-01-01T00:00Z</dcterms:modified>", "never", ">",
    " ", "<", "a&amp;"};

constexpr std::string_view kMetaPieces[] = {"<office:document-meta x>", "<office:document-meta", "<office:meta>",
    "<office:meta y>", "</office:meta>", "</office:document-meta>", "<meta:initial-creator>", "</meta:initial-creator>",
    "<dc:creator>", "</dc:creator>", "<dc:title>t</dc:title>", "<dc:subject>s</dc:subject>", "<meta:keyword>",
    "<meta:keyword>a", "</meta:keyword>", "</meta:keyword>", "<meta:keywords>", "</meta:keywords>",
    "<dc:description>d</dc:description>", "<meta:creation-date>2001-02-03T04:05:06</meta:creation-date>",
    "<dc:date>x</dc:date>", "\n", "<", ">", "b"};

constexpr std::string_view kEncodingPieces[] = {"<?xml", "<?xml ", " encoding=\"utf-8\"", "\nencoding=\"ISO-8859-1\"",
    "encoding=\"x\"", " encoding=\"", " encoding=\"a_b\"", "\"", "?>", "?", ">", " ", "a", " encoding=\"\""};

constexpr std::string_view kBlockPieces[] = {"<o:DocumentProperties>", "</o:DocumentProperties>",
    "<o:documentproperties>", "<o:Author>a</o:Author>", "<o:Subject>&#65;&amp;", "</o:Subject>", "&auml;", "\n", "<a>",
    "<o:LastAuthor>", "</o:LastAuthor>"};

} // namespace

TEST(OfficeScanners, Archives)
{
    CompareReaders(ReadMember<ParseOfficeOpenXml>, OfficeOpenXmlPatterns, kCorePieces,
        "<cp:coreProperties x>%</dc:title></cp:coreProperties>");
    CompareReaders(ReadMember<ParseOpenDocument>, OpenDocumentPatterns, kMetaPieces,
        "<office:document-meta><office:meta>%</office:meta></office:document-meta>");
}

TEST(OfficeScanners, EncodingAndBlock)
{
    CompareReaders(ReadMember<StoreEncoding>, EncodingPattern, kEncodingPieces, "<?xml%?>");
    CompareReaders(ReadXML, BlockPattern, kBlockPieces, "<o:DocumentProperties>%");
}
