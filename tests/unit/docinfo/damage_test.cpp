// Reads damaged copies of small documents of each kind: the seeds of the fuzz targets.
#include "support/damage.h"

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

using namespace qx;
using namespace qxtest;

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
