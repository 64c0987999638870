// Office documents in archives and in single XML files, beyond what the comparison of the scanners with patterns
// covers.
#include "docinfo/office_archive.h"
#include "docinfo/xml_document.h"
#include "support/zip_builder.h"
#include "unit/docinfo/document_in_memory.h"

#include <string>
#include <utility>

using namespace qx;
using namespace qxtest;

namespace
{

constexpr auto kNothing = "-|-|-|-|-|-|-|-";
const std::string kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n";

std::string Core(const std::string& properties, const std::string& declaration = kDeclaration, std::uint16_t method = 8)
{
    const std::string text = declaration + "<cp:coreProperties x='y'>" + properties + "</cp:coreProperties>";
    return Build({BuiltMember("word/document.xml", "text"), BuiltMember("docProps/core.xml", text, method)});
}

std::string Meta(const std::string& properties)
{
    return Build({BuiltMember("mimetype", "application/vnd.oasis.opendocument.text", 0),
        BuiltMember("META.XML", kDeclaration + "<office:document-meta a><office:meta>" + properties +
                                    "</office:meta></office:document-meta>")});
}

// Returns the properties inside a root element that declares the namespaces.
std::string Xml(const std::string& properties)
{
    return "<r:r xmlns:r='1' xmlns:cp='2' xmlns:dc='3' xmlns:DC='3' xmlns:meta='4' xmlns:dcterms='5'>" + properties +
           "</r:r>";
}

std::string XmlCore(const std::string& properties)
{
    return Xml("<cp:coreProperties>" + properties + "</cp:coreProperties>");
}

std::string Block(const std::string& properties)
{
    return "<o:DocumentProperties>" + properties + "</o:DocumentProperties>";
}

} // namespace

// The test of real documents covers the fields.
TEST(OfficeReaders, Archives)
{
    const std::pair<std::string, const char*> documents[] = {
        // In a member that is stored without compression, the declared encoding is ignored.
        {Core("<dc:title>t</dc:title>", "<?xml encoding=\"utf-16\"?>", 0), "t"},
        {Core("<dc:title>\xE4</dc:title>", "<?xml encoding=\"windows-1251\"?>"), "<434>"}};
    for (const auto& [bytes, title] : documents)
        EXPECT_EQ(TextOf(ReadRecord(ReadOfficeArchive, bytes)->Title), title);
    EXPECT_EQ(ReadRecord(ReadOfficeArchive, Build({BuiltMember("a", "b")})).Result(), -1);
}

TEST(OfficeReaders, XmlFiles)
{
    constexpr auto kTitle = "t|-|-|-|-|-|-|-", kAuthor = "-|-|A|-|-|-|-|-";
    const std::string title = "<dc:title>t</dc:title>", author = Block("<o:Author>&#65;</o:Author>");
    const std::pair<std::string, const char*> documents[] = {
        {XmlCore("<DC:TITLE>a&amp;b</DC:TITLE><dc:subject>s</dc:subject><dc:creator>x</dc:creator>"
                 "<meta:initial-creator>a</meta:initial-creator><cp:lastModifiedBy>l</cp:lastModifiedBy>"
                 "<cp:keywords>k</cp:keywords><dc:description>c</dc:description><dc:other>o</dc:other>"
                 "<dcterms:created>2001-02-03T04:05:06</dcterms:created><dc:date>2002-02-03T04:05:06</dc:date>"),
            "a&b|s|a|l|k|c|2001-2-3 4:5:6|2002-2-3 4:5:6"},
        {XmlCore("<dc:date>2002-02-03T04:05:06</dc:date><dcterms:modified>x</dcterms:modified>" + title), kTitle},
        {XmlCore("<meta:keyword>a</meta:keyword><meta:keywords><meta:keyword>b</meta:keyword>"
                 "<meta:keyword>c</meta:keyword></meta:keywords>"),
            "-|-|-|-|a, b, c|-|-|-"},
        {XmlCore("<dc:title><![CDATA[c]]></dc:title><dc:subject> </dc:subject><dc:creator/>"), kNothing},
        {XmlCore("<dc:title>a<dc:title>b</dc:title>t</dc:title>"), kTitle},
        // An element without a prefix isn't counted, but its end is.
        {XmlCore("<p>x</p>" + title), kNothing},
        {Xml("<cp:COREPROPERTIES>" + title + "</cp:COREPROPERTIES>"), kNothing},
        {"<r:r>" + XmlCore(title) + "</r:r>", kTitle},
        {"<cp:coreProperties xmlns:cp='1' xmlns:dc='2'>" + title + "</cp:coreProperties>", kNothing},
        {"<r:r><cp:coreProperties>" + title + "</cp:coreProperties></r:r>", kNothing}, // no namespaces
        // what isn't well-formed
        {XmlCore(title) + "junk" + author, kTitle}, {"<!DOCTYPE r>" + XmlCore(title) + author, kAuthor},
        {"<html><br>" + author, kAuthor},
        // the block of office properties
        {Xml(author), kAuthor}, {XmlCore(title) + author, kTitle},
        {Block("<o:Author>a</o:Author><o:Author>A</o:Author><o:Title>t</o:Title><o:Created>x</o:Created>"), kAuthor},
        {std::string(65'536 - author.size(), ' ') + author, kAuthor},
        {std::string(65'537 - author.size(), ' ') + author, kNothing}, {"", kNothing}};
    for (const auto& [bytes, summary] : documents)
        EXPECT_EQ(ReadRecord(ReadXML, bytes).ResultAndSummary(), std::string("0 ") + summary) << bytes.substr(0, 300);
}

// Documents constructed to be slow.
TEST(OfficeReaders, BoundedTime)
{
    const std::size_t size = FileWindow::kCapacity - 200;
    for (const char* const piece : {"<cp:coreProperties ", "<dc:title", "<dc:title>", "</cp:coreProperties>"})
        ExpectQuick(ReadOfficeArchive, Core(Repeat(piece, size)));
    for (const char* const piece : {"<office:meta>", "</office:meta>", "<meta:keyword>", "<meta:keyword>\n"})
        for (const char* const open : {"", "<meta:keywords>"})
            ExpectQuick(ReadOfficeArchive, Meta(open + Repeat(piece, size) + "</meta:keywords>"));
    for (const char* const piece : {"<?xml", " encoding=\"", " encoding=\"a", "?>"})
        ExpectQuick(ReadOfficeArchive, Core("", Repeat(piece, size)));
    for (const std::string& document : {Repeat("<a>", size), Repeat("<a:b/>", size),
             "<a" + Numbered(size, " b", "=''") + "/>", "<a" + Numbered(size, " xmlns:b", "=''") + "/>",
             "<a" + Repeat(" ", size), "<a>" + Repeat("&#65;", size), "<a>" + Repeat("<![CDATA[", size),
             "<a>" + Repeat("<!--", size), "<!DOCTYPE a [" + Repeat("<!ENTITY a 'b'>", size),
             "<o:DocumentProperties>" + Repeat("&#38;#", size) + "</o:DocumentProperties>",
             Repeat("<o:DocumentProperties>", size),
             XmlCore("<meta:keywords>" + Repeat("<dc:a>keyword</dc:a>", 16 * size) + "</meta:keywords>")})
        ExpectQuick(ReadXML, document);
}
