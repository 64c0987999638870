// Web pages and Rich Text files.
#include "docinfo/html.h"
#include "docinfo/rtf.h"
#include "unit/docinfo/document_in_memory.h"

#include <gtest/gtest.h>

#include <chrono>

using namespace qx;
using qxtest::DateOf;
using qxtest::ReadRecord;
using qxtest::TextOf;

namespace
{

struct Page
{
    std::string_view bytes;
    const char* title;
    const char* author;
    const char* comments;
};

std::string Repeat(std::string_view piece, std::size_t size)
{
    std::string text;
    while (text.size() + piece.size() <= size)
        text += piece;
    return text;
}

} // namespace

TEST(HtmlReader, Heads)
{
    const std::string longHead = "<head><title>a</title>" + std::string(FileWindow::kCapacity, ' ') + "</head>";
    const Page pages[] = {
        {"<html><HEAD><TITLE>a</TITLE></HEAD>", "a", "-", "-"},
        {"<head><title>a\r\nb</title></head>", "ab", "-", "-"},
        {"<head><title>M&uuml;ller &#252;&#xfc; AT&amp;T &#X41;</title></head>", "M<fc>ller <fc><fc> AT&amp;T ", "-",
            "-"},
        {"<head><meta name=\"author\" content=\"x\"><meta name=\"description\" content=\"c\"></head>", "-", "x", "c"},
        {"<head><meta content=\"x\" name=\"author\"><meta name='author' content='x'></head>", "-", "-", "-"},
        {"<head><title>t</title><o:DocumentProperties><o:Author>o</o:Author><o:Title>no</o:Title>"
         "</o:DocumentProperties><meta name=\"author\" content=\"x\"></head>",
            "t", "o", "-"},
        {longHead, "-", "-", "-"},
        {"<title>no head</title>", "-", "-", "-"},
        {"", "-", "-", "-"},
        {std::string_view("<head><title>a\0b</title></head>", 31), "-", "-", "-"},
    };
    for (const Page& page : pages)
    {
        const ReadRecord record(ReadHTML, page.bytes);
        EXPECT_EQ(record.Result(), 0);
        EXPECT_EQ(TextOf(record->Title), page.title) << page.bytes.substr(0, 100);
        EXPECT_EQ(TextOf(record->Author), page.author) << page.bytes.substr(0, 100);
        EXPECT_EQ(TextOf(record->Comments), page.comments) << page.bytes.substr(0, 100);
    }
}

TEST(HtmlReader, OfficeDates)
{
    const ReadRecord record(ReadHTML,
        "<head><o:DocumentProperties><o:Created>2001-02-03T04:05:06Z</o:Created><o:LastSaved>never</o:LastSaved>"
        "<o:LastAuthor>l</o:LastAuthor></o:DocumentProperties></head>");
    EXPECT_EQ(DateOf(record->Created), "2001-2-3 4:5:6");
    EXPECT_EQ(DateOf(record->LastSaved), "-");
    EXPECT_EQ(TextOf(record->LastAuthor), "l");
}

TEST(RtfReader, Groups)
{
    const Page documents[] = {
        {R"({\rtf1{\info{\title Report}{\author M\'fcller}}})", " Report", " M<fc>ller", "-"},
        {R"({\rtf1{\info{\title a\\\\\\\\b}{\doccomm a\\\\b}}})", R"( a\\b)", "-", R"( a\\b)"},
        {R"({\rtf1{\info{\title a{\b c}d}{\author x}}})", R"( a{\b c)", " x", "-"},
        {R"({\rtf1{\info{\Title a}{\author x  } }})", "-", " x", "-"},
        {R"({\rtf1{\info{\title A}{\title B}{\title A}}})", " B", "-", "-"},
        {R"({\rtf1{\title no information group}})", "-", "-", "-"},
    };
    for (const Page& document : documents)
    {
        const ReadRecord record(ReadRTF, document.bytes);
        EXPECT_EQ(record.Result(), 0);
        EXPECT_EQ(TextOf(record->Title), document.title) << document.bytes;
        EXPECT_EQ(TextOf(record->Author), document.author) << document.bytes;
        EXPECT_EQ(TextOf(record->Comments), document.comments) << document.bytes;
    }
    const ReadRecord dated(ReadRTF, R"({\rtf1{\info{\creatim\yr2001\mo2\dy3\hr4\min5}{\revtim\yr1999\sec7}}})");
    EXPECT_EQ(DateOf(dated->Created), "2001-2-3 4:5:0");
    EXPECT_EQ(DateOf(dated->LastSaved), "1999-0-0 0:0:0");
}

// Built to be slow: each would take minutes, or seconds, with the patterns of the formats.
TEST(WebReaders, BoundedTime)
{
    const std::size_t size = FileWindow::kCapacity - 200;
    std::string distinct, elements;
    for (int i = 0; distinct.size() < size; ++i)
        distinct += "{\\a" + std::to_string(i) + "}";
    std::string joins; // each removal might form a new tag
    for (int i = 0; joins.size() < size / 2; ++i)
        joins += "<<o:a>" + std::to_string(i) + "</o:a>";
    for (int i = 0; elements.size() < size; ++i)
        elements += "<o:a>" + std::to_string(i) + "</o:a>";
    const std::pair<qxtest::Reader, std::string> documents[] = {
        {ReadHTML, Repeat("<head>", size)},
        {ReadHTML, "<head>" + Repeat("<meta name=\"author\" content=\"", size) + "</head>"},
        {ReadHTML, "<head>" + Repeat("<meta      ", size) + "</head>"},
        {ReadHTML, "<head>" + Repeat("&#38;#", size) + "</head>"},
        {ReadHTML, "<head><o:DocumentProperties>" + Repeat("<o:", size) + "</o:DocumentProperties></head>"},
        {ReadHTML, "<head><o:DocumentProperties>" + Repeat("</o:", size) + ">" + "</o:DocumentProperties></head>"},
        {ReadHTML, "<head><o:DocumentProperties>" + Repeat("<o:b>", size / 2) + elements.substr(0, size / 2) +
                       "</o:DocumentProperties></head>"},
        {ReadHTML,
            "<head><o:DocumentProperties>" + Repeat("<o:b>", size / 2) + joins + "</o:DocumentProperties></head>"},
        {ReadHTML, "<head><o:DocumentProperties>" + elements.substr(0, size - 100) + "</o:DocumentProperties></head>"},
        {ReadRTF, Repeat("{\\info{\\a }", size)},
        {ReadRTF, "{\\info" + distinct + "}}"},
        {ReadRTF, "{\\info{\\a }" + Repeat("{", size / 2) + distinct.substr(0, size / 2) + "}}"},
        {ReadRTF, "{\\info{\\a " + Repeat("\\'5c", size) + "}}"},
        {ReadRTF, "{\\info{\\creatim " + Repeat("\\yr1\\mo22\\a3\\b44", size) + "}}"},
    };
    for (const auto& [reader, document] : documents)
    {
        const auto begin = std::chrono::steady_clock::now();
        EXPECT_EQ(ReadRecord(reader, document).Result(), 0);
        const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
        EXPECT_LT(seconds.count(), qxtest::kMostSeconds) << document.substr(0, 60);
    }
}
