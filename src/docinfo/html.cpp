#include "docinfo/html.h"

#include "core/text/text_buffer.h"
#include "docinfo/file_text.h"
#include "docinfo/html_entities.h"
#include "docinfo/office_block.h"
#include "docinfo/text_scan.h"

#include <initializer_list>
#include <optional>

namespace qx
{
namespace
{

using Views = std::initializer_list<std::wstring_view>;

// Returns the text between the first `begin` and the next `end`.
std::optional<std::wstring_view> Between(std::wstring_view text, std::wstring_view begin, std::wstring_view end)
{
    const std::size_t start = FindIgnoringCase(text, begin, 0);
    if (start == kNotFound)
        return std::nullopt;
    const std::size_t inner = start + begin.size();
    const std::size_t stop = FindIgnoringCase(text, end, inner);
    if (stop == kNotFound)
        return std::nullopt;
    return text.substr(inner, stop - inner);
}

// Returns the position after the white space at `from`, or kNotFound if there is none.
std::size_t AfterSpace(std::wstring_view text, std::size_t from)
{
    const std::size_t end = SkipSpace(text, from);
    return end > from ? end : kNotFound;
}

// Returns the content of the first element <meta name="NAME" content="..."> with one of the names.
std::optional<std::wstring_view> MetaContent(std::wstring_view text, Views names)
{
    static constexpr std::wstring_view kMeta = L"<meta", kName = L"name=\"", kContent = L"content=\"";
    for (std::size_t at = FindIgnoringCase(text, kMeta, 0); at != kNotFound; at = FindIgnoringCase(text, kMeta, at + 1))
    {
        const std::size_t nameBegin = AfterSpace(text, at + kMeta.size());
        if (nameBegin == kNotFound || !StandsAt(text, nameBegin, kName))
            continue;
        for (const std::wstring_view name : names)
        {
            const std::size_t quote = nameBegin + kName.size() + name.size();
            if (!StandsAt(text, nameBegin + kName.size(), name) || !StandsAt(text, quote, L"\""))
                continue;
            const std::size_t contentBegin = AfterSpace(text, quote + 1);
            if (contentBegin == kNotFound || !StandsAt(text, contentBegin, kContent))
                continue;
            const std::size_t value = contentBegin + kContent.size();
            const std::size_t end = text.find(L"\">", value);
            if (end == kNotFound)
                return std::nullopt;
            return text.substr(value, end - value);
        }
    }
    return std::nullopt;
}

} // namespace

int ReadHTML(clsDocu& record, FileWindow& file)
{
    String page;
    if (!ReadFirstText(file, page))
        return 0;
    const auto rawHead = Between(page.View(), L"<head>", L"</head>");
    if (!rawHead)
        return 0;
    const TextBuffer head = DecodeEntities(*rawHead, true);
    if (const auto title = Between(head, L"<title>", L"</title>"))
        clsDocu::SetText(record.Title, String(*title));
    if (const auto properties = Between(head, L"<o:documentproperties>", L"</o:documentproperties>"))
        return ParseOfficeProperties(record, *properties);

    const struct
    {
        clsVariant& field;
        Views names;
    } fields[] = {
        {record.Author, {L"author"}},
        {record.Comments, {L"description", L"dc.description"}},
        {record.Subject, {L"dc.subject"}},
        {record.Keywords, {L"keywords", L"dc.subject.keywords"}},
    };
    for (const auto& [field, names] : fields)
        if (const auto content = MetaContent(head, names))
            clsDocu::SetText(field, String(*content));
    return 0;
}

} // namespace qx
