#include "docinfo/office_open_xml.h"

#include "docinfo/text_scan.h"
#include "docinfo/xml_values.h"

#include <optional>

namespace qx
{
namespace
{

// Returns the text between the first start tag with attributes and the last end tag.
std::optional<std::wstring_view> CoreProperties(std::wstring_view text)
{
    static constexpr std::wstring_view kCoreOpen = L"<cp:coreProperties", kCoreClose = L"</cp:coreProperties>";
    std::size_t begin = text.find(kCoreOpen);
    while (begin != kNotFound &&
           (begin + kCoreOpen.size() == text.size() || !IsSpaceASCII(text[begin + kCoreOpen.size()])))
        begin = text.find(kCoreOpen, begin + 1);
    const std::size_t tagEnd = begin != kNotFound ? text.find(L'>', begin + kCoreOpen.size() + 1) : kNotFound;
    const std::size_t end = text.rfind(kCoreClose);
    if (tagEnd == kNotFound || end == kNotFound || end <= tagEnd)
        return std::nullopt;
    return text.substr(tagEnd + 1, end - tagEnd - 1);
}

// Returns the contents of the first element. `open` is its start tag without the ">", so elements with longer names
// match, too.
std::optional<std::wstring_view> ElementText(std::wstring_view text, std::wstring_view open, std::wstring_view close)
{
    const std::size_t begin = text.find(open);
    const std::size_t tagEnd = begin != kNotFound ? text.find(L'>', begin + open.size()) : kNotFound;
    const std::size_t end = tagEnd != kNotFound ? text.find(close, tagEnd + 1) : kNotFound;
    if (end == kNotFound)
        return std::nullopt;
    return text.substr(tagEnd + 1, end - tagEnd - 1);
}

} // namespace

void ParseOfficeOpenXml(clsDocu& record, std::wstring_view text)
{
    const auto properties = CoreProperties(text);
    if (!properties)
        return;
    const auto find = [&](std::wstring_view open, std::wstring_view close)
    {
        return ElementText(*properties, open, close);
    };
    StoreText(record.Author, find(L"<dc:creator", L"</dc:creator>"));
    StoreDate(record.Created, find(L"<dcterms:created", L"</dcterms:created>"));
    StoreDate(record.LastSaved, find(L"<dcterms:modified", L"</dcterms:modified>"));
    StoreText(record.LastAuthor, find(L"<cp:lastModifiedBy", L"</cp:lastModifiedBy>"));
    StoreText(record.Title, find(L"<dc:title", L"</dc:title>"));
    StoreText(record.Subject, find(L"<dc:subject", L"</dc:subject>"));
    StoreText(record.Keywords, find(L"<cp:keywords", L"</cp:keywords>"));
    StoreText(record.Comments, find(L"<dc:description", L"</dc:description>"));
}

} // namespace qx
