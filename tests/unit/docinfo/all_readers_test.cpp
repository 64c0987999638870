// All readers: with documents that other programs made, and with damaged ones.
#include "support/damage.h"

#include "core/charset/charset_conversion.h"
#include "docinfo/html.h"
#include "docinfo/jpeg.h"
#include "docinfo/mail.h"
#include "docinfo/office_archive.h"
#include "docinfo/pdf.h"
#include "docinfo/property_set.h"
#include "docinfo/rtf.h"
#include "docinfo/word2.h"
#include "docinfo/wordperfect.h"
#include "docinfo/xml_document.h"
#include "support/zip_builder.h"
#include "unit/docinfo/document_in_memory.h"
#include "unit/docinfo/tiff_builder.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>

using namespace qx;
using namespace qxtest;

namespace
{

// Documents with other extensions are read as property sets.
const std::map<std::string, Reader> readersByExtension = {{".tif", ReadTIFFFile}, {".jpg", ReadJPEG},
    {".eml", ReadMail}, {".docx", ReadOfficeArchive}, {".xlsx", ReadOfficeArchive}, {".odt", ReadOfficeArchive},
    {".ods", ReadOfficeArchive}, {".xml", ReadXML}, {".pdf", ReadPDF}, {".html", ReadHTML}, {".rtf", ReadRTF}};

void ReadDocument(clsDocu& record, const std::filesystem::path& path)
{
    const String name = Wide(path.string());
    const auto reader = readersByExtension.find(path.extension().string());
    if (reader == readersByExtension.end())
    {
        const bool hasNoSummary = path.filename() == "bare.doc";
        EXPECT_EQ(ReadPropertySet(record, name), hasNoSummary ? -1 : 0);
        return;
    }
    clsDocFile file(name);
    FileWindow window(file);
    reader->second(record, window);
}

} // namespace

// Each folder of documents has a file answers.tsv with what another program reads. It explains the differences. The
// columns are the document, the field, the other program's answer, and the reader's answer or "=".
TEST(DocumentReaders, RealDocuments)
{
    constexpr std::pair<const char*, int> kFolders[] = {
#if !defined(_WIN32) // the pages are in UTF-8, which isn't the default code page on windows
        {"markup", 6 * 8},
#endif
        {"images", 8 * 8},
        {"mail", 20},
        {"office", 11 * 8},
        {"pdf", 8 * 8},
        {"storage", 4 * 8}
    };
    for (const auto& [name, expectedRows] : kFolders)
    {
        const std::filesystem::path folder = std::filesystem::path(QXUT_TEST_DOCUMENTS) / name;
        std::ifstream answers(folder / "answers.tsv");
        int rows = 0;
        for (std::string line; std::getline(answers, line); ++rows)
        {
            std::istringstream row(line);
            std::string document, field, expected, own;
            for (std::string* const cell : {&document, &field, &expected, &own})
                std::getline(row, *cell, '\t');
            const clsAutoRelease<clsDocu*> record = EmptyRecord();
            for (std::size_t at = own.find("\\t"); at != std::string::npos; at = own.find("\\t", at))
                own.replace(at, 2, "\t");
            ReadDocument(*record, folder / document);
            const std::map<std::string, std::string> found = {{"Title", TextOf(record->Title)},
                {"Subject", TextOf(record->Subject)}, {"Author", TextOf(record->Author)},
                {"LastAuthor", TextOf(record->LastAuthor)}, {"Keywords", TextOf(record->Keywords)},
                {"Comments", TextOf(record->Comments)}, {"Created", DateOf(record->Created)},
                {"LastSaved", DateOf(record->LastSaved)}};
            clsCharsetConversionStringCP wide(65001, (own == "=" ? expected : own).c_str());
            EXPECT_EQ(found.at(field), ReadableText(wide.GetWide())) << line.substr(0, 200);
        }
        EXPECT_EQ(rows, expectedRows) << name;
    }
}

// The documents are the seeds of the fuzz targets.
TEST(DocumentReaders, SurviveDamage)
{
    const struct
    {
        const char* name;
        Reader reader;
        const char* member = ""; // contains the seed if the document is an archive
        std::uint16_t method = 0;
    } kinds[] = {{"tiff", ReadTIFFFile}, {"jpeg", ReadJPEG}, {"pdf", ReadPDF}, {"html", ReadHTML}, {"mail", ReadMail},
        {"storage", ReadSummaryInformation},
        {"office_open_xml", ReadOfficeArchive, "docProps/core.xml", kZipMethodDeflate},
        {"open_document", ReadOfficeArchive, "meta.xml"},
#ifdef __linux__ // assertions of Wine's XML reader end the process
        {"xml", ReadXML},
#endif
        {"rtf", ReadRTF}, {"word2", ReadWord2}, {"wordperfect", ReadWordPerfect}};
    for (const auto& [name, reader, member, method] : kinds)
        for (const auto& seed : std::filesystem::directory_iterator(std::string(QXUT_FUZZ_CORPUS "/documents_") + name))
        {
            std::ifstream file(seed.path(), std::ios::binary);
            const std::string bytes{std::istreambuf_iterator<char>(file), {}};
            const std::string whole =
                *member != 0 ? Build({BuiltMember("first", "other"), BuiltMember(member, bytes, method)}) : bytes;
            EXPECT_EQ(ReadRecord(reader, whole).Result(), 0) << seed.path();
            Damage(whole, 10'000,
                [reader = reader](const std::string& damaged)
                {
                    const int result = ReadRecord(reader, damaged).Result();
                    EXPECT_TRUE(result == 0 || result == -1) << result;
                });
        }
}
