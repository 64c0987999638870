#include "docinfo/office_archive.h"

#include "core/charset/charset_names.h"
#include "docinfo/office_open_xml.h"
#include "docinfo/open_document.h"
#include "docinfo/text_scan.h"
#include "zip/member_text.h"

namespace qx
{
namespace
{

bool IsEncodingCharacter(wchar_t c)
{
    return c == L'-' || IsDigitASCII(c) || IsLetterASCII(c);
}

class PropertyParser : public IZIPTextReceiver
{
public:
    explicit PropertyParser(clsDocu& record) : _record(record) {}

    void OnText(ZIPTextKind kind, const String& text, const clsZIPMember& member) override
    {
        const std::wstring_view encoding = DeclaredEncoding(text.View());
        const unsigned codePage = encoding.data() != nullptr ? CharsetNameToCodePage(IString(String(encoding))) : 0;
        Parse(kind, codePage != 0 ? member.Text(codePage) : text);
    }

    void OnMessage(const String& line) override { _record.Remark(L"%s", line.Text()); }

private:
    void Parse(ZIPTextKind kind, const String& text)
    {
        if (kind == ZIPTextKind::OpenDocument)
            ParseOpenDocument(_record, text.View());
        else
            ParseOfficeOpenXml(_record, text.View());
    }

    clsDocu& _record;
};

} // namespace

int ReadOfficeArchive(clsDocu& record, FileWindow& file)
{
    PropertyParser parser(record);
    return GetZIPFilenames(parser, file);
}

// If there are several encodings, uses the last one before a "?>".
std::wstring_view DeclaredEncoding(std::wstring_view text)
{
    static constexpr std::wstring_view kBegin = L"<?xml", kEncoding = L"encoding=\"";
    const std::size_t begin = text.find(kBegin);
    const std::size_t end = text.rfind(L"?>");
    if (begin == kNotFound || end == kNotFound)
        return {};
    const std::size_t least = begin + kBegin.size() + 1;
    for (std::size_t at = text.rfind(kEncoding, end); at != kNotFound && at >= least;
         at = text.rfind(kEncoding, at - 1))
    {
        const std::size_t name = at + kEncoding.size();
        std::size_t quote = name;
        while (quote < end && IsEncodingCharacter(text[quote]))
            ++quote;
        if (quote < end && text[quote] == L'"' && IsSpaceASCII(text[at - 1]))
            return text.substr(name, quote - name);
    }
    return {};
}

} // namespace qx
