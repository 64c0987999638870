#include "docinfo/xml_document.h"

#include "core/text/text_buffer.h"
#include "docinfo/com_guard.h"
#include "docinfo/file_text.h"
#include "docinfo/html_entities.h"
#include "docinfo/office_block.h"
#include "docinfo/text_scan.h"
#include "docinfo/wait_for_data.h"
#include "locale/machine_date.h"
#include "module/late_libraries.h"

#include <windows.h>

#include <objbase.h>
#include <xmllite.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <vector>

namespace qx
{
namespace
{

constexpr GUID kXmlReaderId = {0x7279FC81, 0x709D, 0x4095, {0xB6, 0x3D, 0x69, 0xFE, 0x4B, 0x0D, 0x90, 0x30}};
constexpr std::wstring_view kCoreProperties = L"cp:coreProperties";

struct XmlTextRow
{
    const wchar_t* element;
    clsVariant clsDocu::*field;
};

constexpr XmlTextRow kXmlTexts[] = {
    {L"dc:title", &clsDocu::Title},
    {L"dc:subject", &clsDocu::Subject},
    {L"dc:creator", &clsDocu::Author},
    {L"meta:initial-creator", &clsDocu::Author},
    {L"cp:lastModifiedBy", &clsDocu::LastAuthor},
    {L"cp:keywords", &clsDocu::Keywords},
    {L"meta:keyword", &clsDocu::Keywords},
    {L"dc:description", &clsDocu::Comments},
};

struct XmlDateRow
{
    const wchar_t* element;
    SYSTEMTIME clsDocu::*field;
};

constexpr XmlDateRow kXmlDates[] = {
    {L"dcterms:created", &clsDocu::Created},
    {L"meta:creation-date", &clsDocu::Created},
    {L"dcterms:modified", &clsDocu::LastSaved},
    {L"dc:date", &clsDocu::LastSaved},
};

clsAutoRelease<IXmlReader*> CreateReader(clsFile& file)
{
    clsAutoRelease<IXmlReader*> reader;
    auto& create = XMLLite().p_CreateXmlReader;
    if (!create.IsThere() || FAILED(create(kXmlReaderId, reinterpret_cast<void**>(reader.Receive()), nullptr)))
        return {};
    if (FAILED(reader->SetInput(static_cast<IStream*>(&file))))
        reader.Release();
    return reader;
}

// The names of the open elements that have a prefix. The buffers of removed names are reused.
class OpenElements
{
public:
    void Push(std::wstring_view prefix, std::wstring_view name)
    {
        if (_count == _names.size())
            _names.emplace_back();
        TextBuffer& full = _names[_count++];
        full = prefix;
        full += L':';
        full += name;
    }
    // Removes the innermost name. Also called at the end of elements without a prefix, which were never pushed; it then
    // removes the name of an outer element.
    void Pop() { _count -= _count > 0; }

    std::size_t Count() const { return _count; }
    // Index 0 is the innermost element.
    std::wstring_view At(std::size_t index) const { return _names[_count - 1 - index]; }

private:
    std::vector<TextBuffer> _names;
    std::size_t _count = 0;
};

enum class XmlPass
{
    Found,
    NotFound,
    Failed
};

// Walks through the nodes of a document.
class XmlWalk
{
public:
    XmlWalk(clsDocu& record, IXmlReader& reader) : _record(record), _reader(reader) {}

    // Reads the nodes. No document has more nodes than bytes; a reader that returns more is stuck in a damaged
    // document.
    XmlPass Run(std::uint64_t mostNodes)
    {
        const XmlPass pass = TakeNodes(mostNodes);
        StoreKeywords();
        return pass;
    }

private:
    using Getter = HRESULT (STDMETHODCALLTYPE IXmlReader::*)(const wchar_t** text, UINT* length);

    XmlPass TakeNodes(std::uint64_t mostNodes)
    {
        for (std::uint64_t count = 0; count <= mostNodes && !_reader.IsEOF(); ++count)
        {
            XmlNodeType type = XmlNodeType_None;
            const HRESULT result = WaitForData([&] { return _reader.Read(&type); });
            if (FAILED(result))
                Remark(L"ERR: read() returned %s", result);
            if (result != S_OK)
                break;
            if (!TakeNode(type))
                return XmlPass::Failed;
        }
        return _isFound ? XmlPass::Found : XmlPass::NotFound;
    }

    void Remark(const wchar_t* format, HRESULT result)
    {
        _record.Remark(format, String::SystemErrorText(static_cast<unsigned>(result)).Text());
    }

    std::optional<std::wstring_view> Get(Getter getter, const wchar_t* message)
    {
        const wchar_t* text = nullptr;
        UINT length = 0;
        const HRESULT result = (_reader.*getter)(&text, &length);
        if (SUCCEEDED(result))
            return std::wstring_view(text, length);
        Remark(message, result);
        return std::nullopt;
    }

    bool TakeNode(XmlNodeType type)
    {
        switch (type)
        {
        case XmlNodeType_Element:
            return OpenElement();
        case XmlNodeType_EndElement:
            _open.Pop();
            return true;
        case XmlNodeType_Text:
            return TakeText();
        default:
            return true;
        }
    }

    bool OpenElement()
    {
        const auto prefix = Get(&IXmlReader::GetPrefix, L"Error getting prefix, error is %s");
        if (!prefix)
            return false;
        const auto name = Get(&IXmlReader::GetLocalName, L"Error getting local name, error is %s");
        if (!name)
            return false;
        if (!_reader.IsEmptyElement() && !prefix->empty())
            _open.Push(*prefix, *name);
        return true;
    }

    bool TakeText()
    {
        if (_open.Count() < 3)
            return true;
        const bool isProperty = _open.At(1) == kCoreProperties;
        const bool isKeyword = !isProperty && _open.At(1) == L"meta:keywords" && _open.At(2) == kCoreProperties;
        if (!isProperty && !isKeyword)
            return true;
        const auto value = Get(&IXmlReader::GetValue, L"Error getting value, error is %s");
        if (!value)
            return false;
        if (isProperty)
            TakeProperty(*value);
        else
            AddKeyword(*value);
        return true;
    }

    void TakeProperty(std::wstring_view value)
    {
        _isFound = true;
        const IString element = String(_open.At(0));
        const auto isElement = [&](const auto& row)
        {
            return element == row.element;
        };
        if (const auto* const row = std::find_if(std::begin(kXmlTexts), std::end(kXmlTexts), isElement);
            row != std::end(kXmlTexts))
        {
            clsDocu::SetText(_record.*row->field, String(value));
            _hasKeywords = _hasKeywords && row->field != &clsDocu::Keywords; // the value replaces the keywords so far
        }
        if (const auto* const row = std::find_if(std::begin(kXmlDates), std::end(kXmlDates), isElement);
            row != std::end(kXmlDates))
        {
            SYSTEMTIME& field = _record.*row->field;
            field = kNoTime;
            ReadISO8601Date(value, field);
        }
    }

    // Collects the keywords, because storing each one would copy all previous ones.
    void AddKeyword(std::wstring_view value)
    {
        if (!_hasKeywords)
            _keywords = _record.Keywords.Type() != VT_EMPTY ? ToString(_record.Keywords).View() : std::wstring_view();
        _hasKeywords = true;
        if (!_keywords.empty())
            _keywords += L", ";
        _keywords += value;
    }

    void StoreKeywords()
    {
        if (_hasKeywords)
            clsDocu::SetText(_record.Keywords, String(std::wstring_view(_keywords)));
    }

    clsDocu& _record;
    IXmlReader& _reader;
    OpenElements _open;
    TextBuffer _keywords; // not yet in the record
    bool _hasKeywords = false;
    bool _isFound = false;
};

XmlPass ReadElements(clsDocu& record, FileWindow& file)
{
    const clsCOMInitialize com;
    const clsAutoRelease<IXmlReader*> reader =
        com.IsUsable() ? CreateReader(file.Rewind()) : clsAutoRelease<IXmlReader*>();
    return reader ? XmlWalk(record, *reader).Run(file.Size()) : XmlPass::NotFound;
}

int ReadOfficeBlock(clsDocu& record, FileWindow& file)
{
    static constexpr std::wstring_view kBlockOpen = L"<o:DocumentProperties>", kBlockClose = L"</o:DocumentProperties>";
    String text;
    if (!ReadFirstText(file, text))
        return 0;
    const std::size_t open = text.View().find(kBlockOpen);
    if (open == kNotFound)
        return 0;
    const std::size_t begin = open + kBlockOpen.size();
    const std::size_t end = text.View().find(kBlockClose, begin);
    if (end == kNotFound)
        return 0;
    return ParseOfficeProperties(record, DecodeEntities(text.View().substr(begin, end - begin), false));
}

} // namespace

int ReadXML(clsDocu& record, FileWindow& file)
{
    switch (ReadElements(record, file))
    {
    case XmlPass::Found:
        return 0;
    case XmlPass::Failed:
        return -1;
    default:
        return ReadOfficeBlock(record, file);
    }
}

} // namespace qx
