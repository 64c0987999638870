// The information dictionary of PDF files.
#include "docinfo/pdf.h"
#include "unit/docinfo/document_in_memory.h"
#include "unit/docinfo/pdf_builder.h"

#include <gtest/gtest.h>

#include <chrono>

using namespace qx;
using qxtest::DateOf;
using qxtest::PdfOf;
using qxtest::ReadRecord;
using qxtest::TextOf;

TEST(PdfReader, Values)
{
    const std::pair<std::string, const char*> titles[] = {
        {"/Title (Gr\\374\\337e)", "Gr<fc><df>"
                                   "e"},
        {"/Title (\\)\\n\\x\\7\\0a(b)c)", ")<a>\\x<7>a(b)c"},
        {"/Title (\\376\\377\\000G\\000r)", "Gr"},
        {"/Title (\xFF\xFEG\\000r\\000)", "Gr"},
        {"/Title <FEFF00470072>", "Gr"},
        {"/Title <FF FE 47 00 7>", "G"},
        {"/Title <EFBBBFC3BC>", "<fc>"},
        {"/Title <4x7>", "@p"}, // what is no digit counts as 0
        {"/Title /A#42#4", "AB#4"},
        {"/Title% a comment\n(a)", "a"},
        {"/Ti#74le (a)", "a"},
        {"/Title (a) /Title (b)", "a"},
        {"/title (a)", ""},
        {"/Title true", "-1"},
        {"/Title 12 ", "12"},
        {"/Title [1 (a) % x\n]", "1 (a) <a>"},
        {"/Title <</A (b)>>", "<dummy:Dict>"},
        {"/A << /B << /C 1 >> >> /Title (a)", "a"},
        {"/A . /Title (a)", ""}, // a point without a digit is no value, so the key has the value "Title"
        {"/A 1.5 /Title (a)", "a"},
    };
    for (const auto& [entry, title] : titles)
    {
        const ReadRecord record(qx::ReadPDF, PdfOf({{"<</Author (x) " + entry + ">>"}}));
        EXPECT_EQ(record.Result(), 0);
        EXPECT_EQ(TextOf(record->Title), title) << entry;
        EXPECT_EQ(TextOf(record->Author), "x") << entry;
        EXPECT_TRUE(record->remark.IsEmpty()) << entry;
    }
}

TEST(PdfReader, Faults)
{
    std::string nested = "/A ";
    for (int i = 0; i < 101; ++i)
        nested += "<</A ";
    const std::pair<std::string, const wchar_t*> objects[] = {
        {"<</Title (a) /B <41", L"EXCEPTION 'premature end of object'"},
        {"<</Title (a) /B 1", L"EXCEPTION 'premature end of dictionary'"},
        {"<</Title (a) /B tree>>", L"EXCEPTION 'unexpected token'"},
        {"<</Title (a) /B /C", L"EXCEPTION 'expected end of dictionary'"},
        {"<</Title (a) " + nested, L"EXCEPTION 'dictionaries are nested too deeply'"},
    };
    for (const auto& [object, remark] : objects)
    {
        // The zero byte ends the text.
        const ReadRecord record(ReadPDF, PdfOf({{object + std::string(1, '\0')}}));
        EXPECT_EQ(TextOf(record->Title), "a") << object;
        EXPECT_EQ(record->remark.View(), remark) << object;
    }
    EXPECT_EQ(
        ReadRecord(ReadPDF, PdfOf({{"(no dictionary)"}}))->remark.View(), L"EXCEPTION 'object is not a dictionary'");
}

TEST(PdfReader, Tables)
{
    const std::string info = "<</Title (a)>>";
    const std::pair<std::string, const wchar_t*> tables[] = {
        {"xref\n1 1\n0000000009 00000 n \n0000000040 00000 n \n", L"EXCEPTION 'bad xref count'"},
        {"xref\n", L"EXCEPTION 'no object'"}, // a table without a trailer
        {"1 0 obj\n<</Type/XRef/Filter/FlateDecode/Length 3>>stream\r\nabc\nendstream",
            L"EXCEPTION 'no xref compressed(FlateDecode)'"},
        {std::string("1 0 obj\n<</Type/XRef/Filter/FlateDecode/Length 3>>stream\na") + '\0' + "c\nendstream",
            L"EXCEPTION 'no xref compressed(FlateDecode)'"},
        {"xref\n9223372036854775807 2\n0000000009 00000 n \n0000000009 00000 n \n", L""},
        {"1 0 obj\n<</Type/XRef/Filter/FlateDecode/Length 4000000000>>stream\nabc\nendstream", L"EXCEPTION 'no xref'"},
        {"1 0 obj\n<</Type/Other/Filter/FlateDecode/Length 3>>stream\nabc\nendstream", L"EXCEPTION 'no xref'"},
        {"1 0 obj\n<</Type/XRef/Filter/FlateDecode/Length 3>>other", L"EXCEPTION 'no xref stream'"},
        {"nothing", L"EXCEPTION 'no object'"},
    };
    for (const auto& [table, remark] : tables)
    {
        std::string bytes = PdfOf({{info, "", table}});
        if (table == "xref\n")
            bytes.replace(bytes.find("trailer"), 7, "TRAILER");
        const ReadRecord record(ReadPDF, bytes);
        EXPECT_EQ(record.Result(), 0);
        EXPECT_EQ(TextOf(record->Title), "-") << table;
        EXPECT_EQ(record->remark.View(), remark) << table;
    }
    // The first subsection counts, and an object needs a next one.
    const std::string two = "xref\n1 1\n0000000009 00000 n \n2 1\n0000000040 00000 n \n";
    EXPECT_EQ(TextOf(ReadRecord(ReadPDF, PdfOf({{info, "", two}}))->Title), "-");
    EXPECT_EQ(TextOf(ReadRecord(ReadPDF, PdfOf({{info}}) + std::string(50, '\n'))->Title), "-"); // too far from the end
    EXPECT_EQ(TextOf(ReadRecord(ReadPDF, PdfOf({{info}}) + std::string(20, '\0'))->Title), "a");
}

TEST(PdfReader, Revisions)
{
    std::vector<qxtest::PdfRevision> revisions;
    for (int i = 0; i < 300; ++i)
        revisions.push_back({"<</Title (" + std::to_string(i) + ")>>"});
    EXPECT_EQ(TextOf(ReadRecord(ReadPDF, PdfOf(revisions))->Title), "299"); // the newest offset of object 1
    // A chain that comes back ends there.
    const std::string first = PdfOf({{"<</Title (a)>>"}});
    const std::string table = std::to_string(first.find("xref\n"));
    EXPECT_EQ(TextOf(ReadRecord(ReadPDF, PdfOf({{"<</Title (a)>>", "/Prev " + table}}))->Title), "a");
}

TEST(PdfReader, Dates)
{
    const std::pair<const wchar_t*, const char*> dates[] = {
        {L"D:20120304050607+01'00'", "2012-3-4 4:6:7"},
        {L"D:20120304050607-01'30'", "2012-3-4 6:36:7"},
        {L"D:20120304050607Z00'00'", "2012-3-4 5:6:7"},
        {L"D:20120304050607", "2012-3-4 5:6:7"},
        {L"D:2012", "2012-1-1 0:0:0"},
        {L"D:20120101000000+01'00' and more", "2011-12-31 23:0:0"},
        {L"D:20121304050607+01'00'", "-"}, // no month to take an hour from
        {L"2012", "-"},
        {L"D", "-"},
        {L"", "-"},
    };
    for (const auto& [text, date] : dates)
        EXPECT_EQ(DateOf(ParsePDFDate(text)), date) << String(text).NarrowText();
    const ReadRecord record(ReadPDF, PdfOf({{"<</CreationDate (D:2012) /ModDate (never)>>"}}));
    EXPECT_EQ(DateOf(record->Created), "2012-1-1 0:0:0");
    EXPECT_EQ(DateOf(record->LastSaved), "-");
    EXPECT_EQ(TextOf(record->Title), ""); // a key that is missing sets an empty text
}

TEST(PdfReader, BoundedTime)
{
    const auto repeat = [](std::string_view piece)
    {
        std::string text;
        while (text.size() < 60'000)
            text += piece;
        return text;
    };
    std::string tables = "%PDF-1.4\n";
    for (std::size_t before = 0; tables.size() < 2'000'000;)
    {
        const std::size_t here = tables.size();
        tables += "xref\n0 1\n0 0 n \ntrailer\n<</Prev " + std::to_string(before) + ">>\n";
        before = here;
        if (tables.size() >= 2'000'000)
            tables += "startxref " + std::to_string(before);
    }
    // Many tables in front of one trailer.
    std::string shared = "%PDF-1.4\n";
    for (int i = 0; i < 4'000; ++i)
        shared += "xref 0 0 ";
    const std::size_t last = shared.size() - 9;
    shared +=
        "trailer<<" + repeat("/A 1 ") + "/Prev " + std::to_string(last - 9) + ">>startxref " + std::to_string(last);
    const std::string files[] = {shared, tables, PdfOf({{"<</A " + repeat("[") + ">>"}}),
        PdfOf({{"<</A " + repeat("(") + ">>"}}), PdfOf({{"<<" + repeat("/A<<>>") + ">>"}}),
        PdfOf({{"<<" + repeat("/A 1 ") + ">>"}}), PdfOf({{"<<" + repeat("% \n") + ">>"}}),
        PdfOf({{"<</A " + repeat("1 ") + ">>"}}), PdfOf({{"<<>>", "", "xref\n0 60000\n" + repeat("0 0 n\n")}})};
    for (const std::string& file : files)
    {
        const auto begin = std::chrono::steady_clock::now();
        EXPECT_EQ(ReadRecord(ReadPDF, file).Result(), 0);
        const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
        EXPECT_LT(seconds.count(), qxtest::kMostSeconds);
    }
}
