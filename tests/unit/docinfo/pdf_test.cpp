// The information dictionary of PDF files.
#include "docinfo/pdf.h"
#include "unit/docinfo/document_in_memory.h"

#include <string>
#include <tuple>
#include <vector>

using namespace qx;
using namespace qxtest;

namespace
{

struct PdfRevision
{
    std::string info;         // object 1; object 2 follows, because a last object isn't read
    std::string trailer = ""; // further entries
    std::string table = "";   // instead of the true table
};

// Returns a file of successive revisions. Each has a table of its own, and a trailer that refers to the previous table.
std::string PdfOf(const std::vector<PdfRevision>& revisions)
{
    std::string bytes = "%PDF-1.4\n";
    std::size_t before = 0;
    for (const PdfRevision& revision : revisions)
    {
        std::string entries;
        for (const std::string& object : {"1 0 obj\n" + revision.info, std::string("2 0 obj\n<<>>")})
        {
            const std::string offset = std::to_string(bytes.size());
            entries += std::string(10 - offset.size(), '0') + offset + " 00000 n \n";
            bytes += object + "\nendobj\n";
        }
        const std::size_t table = bytes.size();
        bytes += revision.table.empty() ? "xref\n1 2\n" + entries : revision.table;
        bytes += "trailer\n<</Info 1 0 R " + revision.trailer;
        if (before != 0)
            bytes += "/Prev " + std::to_string(before);
        bytes += ">>\nstartxref\n" + std::to_string(table) + "\n%%EOF\n";
        before = table;
    }
    return bytes;
}

} // namespace

TEST(PdfReader, Values)
{
    const std::pair<std::string, const char*> titles[] = {{"/Title (Gr\\374\\337e)", "Gr<fc><df>e"},
        {"/Title (\\)\\n\\x\\7\\0a(b)c)", ")<a>\\x<7>a(b)c"}, {"/Title (\\376\\377\\000G\\000r)", "Gr"},
        {"/Title (\xFF\xFEG\\000r\\000)", "Gr"}, {"/Title <FEFF00470072>", "Gr"}, {"/Title <FF FE 47 00 7>", "G"},
        {"/Title <EFBBBFC3BC>", "<fc>"}, {"/Title <4x7>", "@p"}, // a character that isn't a digit counts as 0
        {"/Title /A#42#4", "AB#4"}, {"/Title% a comment\n(a)", "a"}, {"/Ti#74le (a)", "a"},
        {"/Title (a) /Title (b)", "a"}, {"/title (a)", ""}, {"/Title true", "-1"}, {"/Title 12 ", "12"},
        {"/Title 99999999999 ", "2147483647"}, {"/Title -1 ", "4294967295"}, // as a C runtime reads a long of 32 bits
        {"/Title [1 (a) % x\n]", "1 (a) <a>"}, {"/Title <</A (b)>>", "<dummy:Dict>"},
        {"/A << /B << /C 1 >> >> /Title (a)", "a"},
        {"/A . /Title (a)", ""}, // a point without a digit is no value, so the key has the value "Title"
        {"/A 1.5 /Title (a)", "a"}, {"/Title 12 0 R", ""}}; // an array, not the object
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
    const std::string info = "<</Title (a)>>", zero(1, '\0'); // a zero byte ends the text
    const auto tableOf = [&](const std::string& table)
    {
        return PdfOf({{info, "", table}});
    };
    std::string noTrailer = tableOf("xref\n");
    noTrailer.replace(noTrailer.find("trailer"), 7, "TRAILER");
    const std::tuple<std::string, const char*, const wchar_t*> files[] = {
        {PdfOf({{"<</Title (a) /B <41" + zero}}), "a", L"EXCEPTION 'premature end of object'"},
        {PdfOf({{"<</Title (a) /B 1" + zero}}), "a", L"EXCEPTION 'premature end of dictionary'"},
        {PdfOf({{"<</Title (a) /B tree>>"}}), "a", L"EXCEPTION 'unexpected token'"},
        {PdfOf({{"<</Title (a) /B /C" + zero}}), "a", L"EXCEPTION 'expected end of dictionary'"},
        {PdfOf({{"<</Title (a) /A " + Repeat("<</A ", 505)}}), "a", L"EXCEPTION 'dictionaries are nested too deeply'"},
        {PdfOf({{"(no dictionary)"}}), "-", L"EXCEPTION 'object is not a dictionary'"},
        {tableOf("xref\n1 1\n0000000009 00000 n \n0000000040 00000 n \n"), "-", L"EXCEPTION 'bad xref count'"},
        {noTrailer, "-", L"EXCEPTION 'no object'"},
        {tableOf("1 0 obj\n<</Type/XRef/Filter/FlateDecode/Length 3>>stream\r\nabc\nendstream"), "-",
            L"EXCEPTION 'no xref compressed(FlateDecode)'"},
        {tableOf("1 0 obj\n<</Type/XRef/Filter/FlateDecode/Length 3>>stream\na" + zero + "c\nendstream"), "-",
            L"EXCEPTION 'no xref compressed(FlateDecode)'"},
        {tableOf("xref\n9223372036854775807 2\n0000000009 00000 n \n0000000009 00000 n \n"), "-", L""},
        {tableOf("1 0 obj\n<</Type/XRef/Filter/FlateDecode/Length 4000000000>>stream\nabc\nendstream"), "-",
            L"EXCEPTION 'no xref'"},
        {tableOf("1 0 obj\n<</Type/Other/Filter/FlateDecode/Length 3>>stream\nabc\nendstream"), "-",
            L"EXCEPTION 'no xref'"},
        {tableOf("1 0 obj\n<</Type/XRef/Filter/FlateDecode/Length 3>>other"), "-", L"EXCEPTION 'no xref stream'"},
        {tableOf("1 0 obj\n<</Type/XRef/Filter/FlateDecode/Length (1e300)>>stream\nabc\nendstream"), "-",
            L"EXCEPTION 'no xref'"},
        {tableOf("nothing"), "-", L"EXCEPTION 'no object'"},
        {tableOf("xref\n" + zero), "-", L"EXCEPTION 'premature end of xref'"},
        // Only 65,536 bytes of a table are read: here a header of 16 bytes and 3,276 entries of 20 bytes.
        {tableOf("xref\n1 9000    \n" + Repeat("0000000009 00000 n \n", 80'000)), "-",
            L"EXCEPTION 'premature end of xref'"},
        // An object that would be longer than the file isn't read.
        {tableOf("xref\n1 2\n0000000009 00000 n \n0000005000 00000 n \n"), "-", L""},
        // Only the first subsection is read, and an object is read only if another one follows it.
        {tableOf("xref\n1 1\n0000000009 00000 n \n2 1\n0000000040 00000 n \n"), "-", L""}};
    for (const auto& [file, title, remark] : files)
    {
        const ReadRecord record(ReadPDF, file);
        EXPECT_EQ(record.Result(), 0);
        EXPECT_EQ(TextOf(record->Title), title) << file;
        EXPECT_EQ(record->remark.View(), remark) << file;
    }
    // The table's offset must be near the end.
    EXPECT_EQ(TextOf(ReadRecord(ReadPDF, PdfOf({{info}}) + std::string(50, '\n'))->Title), "-");
    EXPECT_EQ(TextOf(ReadRecord(ReadPDF, PdfOf({{info}}) + std::string(20, '\0'))->Title), "a");
}

TEST(PdfReader, Revisions)
{
    std::vector<PdfRevision> revisions(299, {"<</Title (old)>>"});
    revisions.push_back({"<</Title (new)>>"});
    EXPECT_EQ(TextOf(ReadRecord(ReadPDF, PdfOf(revisions))->Title), "new"); // the newest offset of object 1
    // The reference in the oldest trailer is used. Object 3, which must follow object 2, doesn't exist.
    std::string file = PdfOf({{"<</Title (a)>>"}, {"<</Title (b)>>"}});
    file.replace(file.rfind("Info 1"), 6, "Info 2");
    EXPECT_EQ(TextOf(ReadRecord(ReadPDF, file)->Title), "b");
    file.replace(file.find("Info 1"), 6, "Info 2");
    EXPECT_EQ(TextOf(ReadRecord(ReadPDF, file)->Title), "-");
    // An object of 65,536 bytes is read, a longer one isn't.
    const std::size_t around = std::string("1 0 obj\n<</Title (a)>>\nendobj\n").size();
    for (const std::size_t size : {65'536, 65'537})
        EXPECT_EQ(TextOf(ReadRecord(ReadPDF, PdfOf({{"<</Title (a)" + Repeat(" ", size - around) + ">>"}}))->Title),
            size == 65'536 ? "a" : "-");
    // A chain of tables ends where it returns to an earlier table.
    const std::string first = PdfOf({{"<</Title (a)>>"}}), table = std::to_string(first.find("xref\n"));
    EXPECT_EQ(TextOf(ReadRecord(ReadPDF, PdfOf({{"<</Title (a)>>", "/Prev " + table}}))->Title), "a");
}

TEST(PdfReader, Dates)
{
    const std::pair<const wchar_t*, const char*> dates[] = {{L"D:20120304050607+01'00'", "2012-3-4 4:6:7"},
        {L"D:20120304050607-01'30'", "2012-3-4 6:36:7"}, {L"D:20120304050607Z00'00'", "2012-3-4 5:6:7"},
        {L"D:20120304050607", "2012-3-4 5:6:7"}, {L"D:2012", "2012-1-1 0:0:0"},
        {L"D:20120101000000+01'00' and more", "2011-12-31 23:0:0"},
        {L"D:20121304050607+01'00'", "-"}, // the hour can't be subtracted, because the month doesn't exist
        {L"2012", "-"}, {L"D", "-"}};
    for (const auto& [text, date] : dates)
        EXPECT_EQ(DateOf(ParsePDFDate(text)), date) << String(text).NarrowText();
    // A missing key sets an empty text.
    EXPECT_EQ(ReadRecord(ReadPDF, PdfOf({{"<</CreationDate <443A323031320041> /ModDate (never)>>"}})).Summary(),
        "|||-||-|2012-1-1 0:0:0|-");
}

TEST(PdfReader, BoundedTime)
{
    constexpr std::size_t kMany = 60'000;
    std::string tables = "%PDF-1.4\n"; // each refers to the one before
    std::size_t last = 0;
    while (tables.size() < 2'000'000)
    {
        const std::string before = std::to_string(last);
        last = tables.size();
        tables += "xref\n0 1\n0 0 n \ntrailer\n<</Prev " + before + ">>\n";
    }
    tables += "startxref " + std::to_string(last);
    // Many tables in front of one trailer.
    std::string shared = "%PDF-1.4\n" + Repeat("xref 0 0 ", 36'000);
    last = shared.size() - 9;
    shared += "trailer<<" + Repeat("/A 1 ", kMany) + "/Prev " + std::to_string(last - 9) + ">>startxref " +
              std::to_string(last);
    for (const std::string& file :
        {tables, shared, PdfOf({{"<<>>", "", "xref\n0 60000\n" + Repeat("0 0 n\n", kMany)}})})
        ExpectQuick(ReadPDF, file);
    for (const std::string& values : {"/A " + Repeat("[", kMany), "/A " + Repeat("(", kMany), Repeat("/A<<>>", kMany),
             Repeat("/A 1 ", kMany), Repeat("% \n", kMany), "/A " + Repeat("1 ", kMany)})
        ExpectQuick(ReadPDF, PdfOf({{"<<" + values + ">>"}}));
}
