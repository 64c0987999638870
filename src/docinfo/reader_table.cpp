#include "docinfo/reader_table.h"

#include "core/words.h"
#include "docinfo/html.h"
#include "docinfo/jpeg.h"
#include "docinfo/mail.h"
#include "docinfo/office_archive.h"
#include "docinfo/pdf.h"
#include "docinfo/rtf.h"
#include "docinfo/tiff.h"
#include "docinfo/word2.h"
#include "docinfo/wordperfect.h"
#include "docinfo/xml_document.h"
#include "files/paths.h"

#include <algorithm>

namespace qx
{
namespace
{

int ReadTIFFFile(clsDocu& record, FileWindow& file)
{
    return ReadTIFF(record, file, 0);
}

struct ExtensionRow
{
    const wchar_t* extension;
    ReaderRow row;
};

constexpr ExtensionRow kByExtension[] = {
    {L".tif", {L"TIFF", ReadTIFFFile, ReaderFailure::ClearsRecord}},
    {L".jpg", {L"JPEG", ReadJPEG, ReaderFailure::Ignored}},
    {L".jpeg", {L"JPEG", ReadJPEG, ReaderFailure::Ignored}},
    {L".pdf", {L"PDF", ReadPDF, ReaderFailure::ClearsRecord}},
    {L".htm", {L"HTML", ReadHTML, ReaderFailure::ClearsRecord}},
    {L".html", {L"HTML", ReadHTML, ReaderFailure::ClearsRecord}},
    {L".mht", {L"HTML", ReadHTML, ReaderFailure::ClearsRecord}},
    {L".xml", {L"XML", ReadXML, ReaderFailure::ClearsRecord}},
    {L".rtf", {L"RTF", ReadRTF, ReaderFailure::ClearsRecord}},
    {L".eml", {L"mail", ReadMail, ReaderFailure::ClearsRecord}},
    {L".msg", {L"mail", ReadMail, ReaderFailure::ClearsRecord}},
};

struct FirstBytesRow
{
    std::uint32_t bytes; // little-endian
    std::uint32_t mask;
    ReaderRow row; // the bytes are weaker evidence than a name, so the reader may fail
};

constexpr FirstBytesRow kByFirstBytes[] = {
    {0x002A4949, 0xFFFFFFFF, {L"TIFF", ReadTIFFFile, ReaderFailure::Ignored}},
    {0x04034B50, 0xFFFFFFFF, {L"office archive", ReadOfficeArchive, ReaderFailure::Ignored}},
    {0x002DA5DB, 0xFFFFFFFF, {L"Word 2", ReadWord2, ReaderFailure::Ignored}},
    {0x435057FF, 0xFFFFFFFF, {L"WordPerfect", ReadWordPerfect, ReaderFailure::Ignored}},
    {0x46445025, 0xFFFFFFFF, {L"PDF", ReadPDF, ReaderFailure::Ignored}},
    {0x0000D8FF, 0x0000FFFF, {L"JPEG", ReadJPEG, ReaderFailure::Ignored}},
};

} // namespace

const ReaderRow* ChooseReader(const String& path, FileWindow& file)
{
    const IString extension = GetPathExtension(path);
    const auto* const byName = std::find_if(std::begin(kByExtension), std::end(kByExtension),
        [&](const ExtensionRow& row) { return extension == row.extension; });
    if (byName != std::end(kByExtension))
        return &byName->row;

    const std::uint8_t* const head = file.At(0, 4);
    if (head == nullptr)
        return nullptr;
    const std::uint32_t bytes = LittleEndian32(head);
    const auto* const byBytes = std::find_if(std::begin(kByFirstBytes), std::end(kByFirstBytes),
        [=](const FirstBytesRow& row) { return (bytes & row.mask) == row.bytes; });
    return byBytes != std::end(kByFirstBytes) ? &byBytes->row : nullptr;
}

} // namespace qx
