// Web pages and Rich Text files, beyond what the comparison of the scanners with patterns covers.
#include "docinfo/html.h"
#include "docinfo/rtf.h"
#include "unit/docinfo/document_in_memory.h"

#include <tuple>

using namespace qx;
using namespace qxtest;

TEST(WebReaders, Documents)
{
    constexpr auto kNothing = "-|-|-|-|-|-|-|-";
    const std::string longHead = "<head><title>a</title>" + std::string(FileWindow::kCapacity, ' ') + "</head>";
    const std::tuple<Reader, std::string_view, const char*> documents[] = {
        {ReadHTML,
            "<html><HEAD><TITLE>M&uuml;ller\r\n &#252;&#xfc; AT&amp;T</TITLE>"
            "<meta name=\"author\" content=\"x\"><meta name='keywords' content='k'></HEAD>",
            "M<fc>ller <fc><fc> AT&amp;T|-|x|-|-|-|-|-"},
        {ReadHTML,
            "<head><title>t</title><o:DocumentProperties><o:Author>o</o:Author><o:Title>no</o:Title>"
            "<o:Created>2001-02-03T04:05:06Z</o:Created><o:LastSaved>never</o:LastSaved>"
            "<o:LastAuthor>l</o:LastAuthor></o:DocumentProperties><meta name=\"author\" content=\"x\"></head>",
            "t|-|o|l|-|-|2001-2-3 4:5:6|-"},
        {ReadHTML, longHead, kNothing}, {ReadHTML, "<title>no head</title>", kNothing}, {ReadHTML, "", kNothing},
        {ReadHTML, std::string_view("<head><title>a\0b</title></head>", 31), kNothing},
        {ReadRTF, R"({\rtf1{\info{\title a\\\\\\\\b}{\author M\'fcller}{\doccomm a\\\\b}{\revtim\yr1999\sec7}}})",
            R"( a\\b|-| M<fc>ller|-|-| a\\b|-|1999-0-0 0:0:0)"},
        {ReadRTF, R"({\rtf1{\info{\title A}{\title B}{\title A}{\creatim\yr2001\mo2\dy3\hr4\min5}}})",
            " B|-|-|-|-|-|2001-2-3 4:5:0|-"},
        {ReadRTF, R"({\rtf1{\title no information group}})", kNothing}};
    for (const auto& [reader, bytes, summary] : documents)
        EXPECT_EQ(ReadRecord(reader, bytes).ResultAndSummary(), std::string("0 ") + summary) << bytes.substr(0, 100);
}

// With the patterns of the formats, each of these documents would take minutes, or at least seconds.
TEST(WebReaders, BoundedTime)
{
    const std::size_t size = FileWindow::kCapacity - 200;
    const std::string groups = Numbered(size, "{\\a", "}"), elements = Numbered(size - 200, "<o:a>", "</o:a>");
    ExpectQuick(ReadHTML, Repeat("<head>", size));
    for (const std::string& head :
        {Repeat("<meta name=\"author\" content=\"", size), Repeat("<meta      ", size), Repeat("&#38;#", size)})
        ExpectQuick(ReadHTML, "<head>" + head + "</head>");
    // In the last text, each removal might form a new tag.
    for (const std::string& block : {Repeat("<o:", size), Repeat("</o:", size) + ">", elements,
             Repeat("<o:b>", size / 2) + elements.substr(0, size / 2),
             Repeat("<o:b>", size / 2) + Numbered(size / 2, "<<o:a>", "</o:a>")})
        ExpectQuick(ReadHTML, "<head><o:DocumentProperties>" + block + "</o:DocumentProperties></head>");
    for (const std::string& document : {Repeat("{\\info{\\a }", size), "{\\info" + groups + "}}",
             "{\\info{\\a }" + Repeat("{", size / 2) + groups.substr(0, size / 2) + "}}",
             "{\\info{\\a " + Repeat("\\'5c", size) + "}}",
             "{\\info{\\creatim " + Repeat("\\yr1\\mo22\\a3\\b44", size) + "}}"})
        ExpectQuick(ReadRTF, document);
}
