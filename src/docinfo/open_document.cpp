#include "docinfo/open_document.h"

#include "core/text/text_buffer.h"
#include "docinfo/text_scan.h"
#include "docinfo/xml_values.h"

#include <optional>

namespace qx
{
namespace
{

constexpr std::wstring_view kKeyword = L"<meta:keyword>", kKeywordEnd = L"</meta:keyword>";

// Returns the position after the literal, or kNotFound.
std::size_t FindEnd(std::wstring_view text, std::wstring_view literal, std::size_t from)
{
    const std::size_t at = from != kNotFound ? text.find(literal, from) : kNotFound;
    return at != kNotFound ? at + literal.size() : kNotFound;
}

// Returns the text between the first start tag of the properties and their last end tag.
std::optional<std::wstring_view> MetaElement(std::wstring_view text)
{
    static constexpr std::wstring_view kMetaClose = L"</office:meta>";
    const std::size_t document = FindEnd(text, L">", FindEnd(text, L"<office:document-meta", 0));
    const std::size_t begin = FindEnd(text, L">", FindEnd(text, L"<office:meta", document));
    const std::size_t documentEnd = text.rfind(L"</office:document-meta>");
    if (begin == kNotFound || documentEnd == kNotFound || documentEnd < kMetaClose.size())
        return std::nullopt;
    const std::size_t end = text.rfind(kMetaClose, documentEnd - kMetaClose.size());
    if (end == kNotFound || end < begin)
        return std::nullopt;
    return text.substr(begin, end - begin);
}

// Returns the text between the first start tag and the last end tag, which may belong to different elements.
std::optional<std::wstring_view> Outermost(std::wstring_view text, std::wstring_view open, std::wstring_view close)
{
    const std::size_t begin = FindEnd(text, open, 0);
    const std::size_t end = text.rfind(close);
    if (begin == kNotFound || end == kNotFound || end < begin)
        return std::nullopt;
    return text.substr(begin, end - begin);
}

// Joins the keywords that don't contain a line feed.
String JoinKeywords(std::wstring_view text)
{
    TextBuffer joined;
    bool isFirst = true;
    std::size_t end = 0, line = 0; // the next end tag and line feed after the position
    for (std::size_t at = FindEnd(text, kKeyword, 0); at != kNotFound; at = FindEnd(text, kKeyword, at))
    {
        if (end < at)
            end = text.find(kKeywordEnd, at);
        if (end == kNotFound)
            break;
        if (line < at)
            line = text.find(L'\n', at);
        if (line < end)
        {
            at = line;
            continue;
        }
        if (!isFirst)
            joined += L", ";
        isFirst = false;
        joined += text.substr(at, end - at);
        at = end + kKeywordEnd.size();
    }
    return String(std::wstring_view(joined));
}

void StoreKeywords(clsDocu& record, std::wstring_view text)
{
    if (const auto list = Outermost(text, L"<meta:keywords>", L"</meta:keywords>"))
        clsDocu::SetText(record.Keywords, JoinKeywords(*list));
    else
        StoreText(record.Keywords, Outermost(text, kKeyword, kKeywordEnd));
}

} // namespace

void ParseOpenDocument(clsDocu& record, std::wstring_view text)
{
    const auto properties = MetaElement(text);
    if (!properties)
        return;
    const auto find = [&](std::wstring_view open, std::wstring_view close)
    {
        return Outermost(*properties, open, close);
    };
    StoreText(record.Author, find(L"<meta:initial-creator>", L"</meta:initial-creator>"));
    StoreDate(record.Created, find(L"<meta:creation-date>", L"</meta:creation-date>"));
    StoreText(record.LastAuthor, find(L"<dc:creator>", L"</dc:creator>"));
    StoreText(record.Title, find(L"<dc:title>", L"</dc:title>"));
    StoreText(record.Subject, find(L"<dc:subject>", L"</dc:subject>"));
    StoreKeywords(record, *properties);
    StoreText(record.Comments, find(L"<dc:description>", L"</dc:description>"));
    StoreDate(record.LastSaved, find(L"<dc:date>", L"</dc:date>"));
}

} // namespace qx
