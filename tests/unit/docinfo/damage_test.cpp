// Reads damaged copies of small documents of each kind.
#include "support/damage.h"

#include "docinfo/html.h"
#include "docinfo/jpeg.h"
#include "docinfo/mail.h"
#include "docinfo/office_archive.h"
#include "docinfo/pdf.h"
#include "docinfo/rtf.h"
#include "docinfo/word2.h"
#include "docinfo/wordperfect.h"
#include "docinfo/xml_document.h"
#include "support/zip_builder.h"
#include "unit/docinfo/document_in_memory.h"
#include "unit/docinfo/pdf_builder.h"
#include "unit/docinfo/tiff_builder.h"
#include "unit/docinfo/word_builder.h"

using namespace qx;
using namespace qxtest;

TEST(DocumentReaders, SurviveDamage)
{
    TiffBuilder tiff(true);
    tiff.AddText(36867, "2001:02:03 04:05:06");
    const std::uint32_t exif = tiff.EndLoneDirectory();
    tiff.Add(256, 3, 8).Add(257, 3, 6).AddText(269, "title").AddText(306, "2001:02:03 04:05:06");
    tiff.AddRational(33434, 5, 1, 125).Add(34665, 4, exif).EndDirectory();
    const std::pair<Reader, std::string> files[] = {{ReadTIFFFile, tiff.Bytes()},
        {ReadJPEG, JpegOf({{0xE0, "JFIF"}, {0xE1, std::string("Exif\0\0", 6) + tiff.Bytes()}})},
        {ReadPDF,
            PdfOf({{"<</Title (a\\(b) /Author <FEFF0047> /ModDate (D:2012) /K [1 2] /D <</A true>> /R 1 0 R>>"}})},
        {ReadHTML, "<head><title>&auml;&#65;</title><o:DocumentProperties><o:Author>a</o:Author></o:DocumentProperties>"
                   "<meta name=\"author\" content=\"x\"></head>"},
        {ReadMail, "From: =?utf-8?Q?J=C3=BC?= (x =?utf-8?B?YQ==?=) \"q\" <a@b.de>\r\nTo: a@xn--bcher-kva.de\r\n"
                   "Subject: =?utf-8*de?Q?_?=\r\n x\r\nDate: Tue, 03 Feb 2015 10:20:30 +0100\r\n\r\n"},
        {ReadOfficeArchive, Build({{"[Content_Types].xml", "types"},
                                {"docProps/core.xml", "<?xml version=\"1.0\" encoding=\"UTF-8\"?><cp:coreProperties x>"
                                                      "<dc:title>t</dc:title></cp:coreProperties>"}})},
        {ReadOfficeArchive, Build({{"meta.xml",
                                "<office:document-meta><office:meta><dc:title>t</dc:title>"
                                "</office:meta></office:document-meta>",
                                0}})},
#ifdef __linux__ // assertions of Wine's XML reader end the process
        {ReadXML,
            "<?xml version=\"1.0\"?><a xmlns:x='u'><cp:coreProperties xmlns:cp='c'><x:title>t&amp;</x:title><!-- -->"
            "<![CDATA[c]]></cp:coreProperties></a>"},
#endif
        {ReadRTF, R"({\rtf1{\info{\title a\'e4}{\creatim\yr2001\mo2}}})"},
        {ReadWord2, Word2Of({"a", "b", "title", "", "author"})},
        {ReadWordPerfect, WordPerfectOf({WordPerfectEntry(0, 56)},
                              WordPerfectRecord(17, u"title") + WordPerfectRecord(1, u"a\uF90A"))}};
    for (const auto& [reader, whole] : files)
    {
        EXPECT_EQ(ReadRecord(reader, whole).Result(), 0);
        Damage(whole, 10'000,
            [reader = reader](const std::string& bytes)
            {
                const int result = ReadRecord(reader, bytes).Result();
                EXPECT_TRUE(result == 0 || result == -1) << result;
            });
    }
}
