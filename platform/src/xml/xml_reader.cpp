// The pull reader: reads a stream in blocks and returns the nodes one by one.
#include "com/counted_object.h"
#include "xml/xml_parser.h"

#include <algorithm>
#include <new>
#include <optional>
#include <vector>

namespace qxplatform
{
namespace
{

// The blocks grow, because most documents are small.
constexpr std::size_t kFirstBlock = 4096;
constexpr std::size_t kLargestBlock = 65'536;

class XmlReader final : public CountedObject<IXmlReader>
{
public:
    HRESULT SetInput(IUnknown* input) override
    try
    {
        CloseInput();
        if (input == nullptr)
            return S_OK;
        // Some streams return only IStream and not its base interface.
        void* stream = nullptr;
        if (FAILED(input->QueryInterface(IID_ISequentialStream, &stream)))
            if (const HRESULT result = input->QueryInterface(IID_IStream, &stream); FAILED(result))
                return result;
        _stream = static_cast<ISequentialStream*>(stream);
        _parser.emplace();
        _block.resize(kFirstBlock);
        return S_OK;
    }
    catch (const std::bad_alloc&)
    {
        return E_OUTOFMEMORY;
    }

    HRESULT Read(XmlNodeType* type) override
    try
    {
        if (type != nullptr)
            *type = XmlNodeType_None;
        if (!_parser)
            return S_FALSE;
        while (!_parser->Nodes().Next())
        {
            if (FAILED(_failure))
                return _failure;
            if (_isComplete)
            {
                _isAtEnd = true;
                return S_FALSE;
            }
            if (const HRESULT result = ParseBlock(); FAILED(result))
                return result;
        }
        if (type != nullptr)
            *type = _parser->Nodes().Current().type;
        return S_OK;
    }
    catch (const std::bad_alloc&)
    {
        return E_OUTOFMEMORY;
    }

    HRESULT GetLocalName(LPCWSTR* name, UINT* length) override { return TextOf(&XmlNode::name, name, length); }
    HRESULT GetPrefix(LPCWSTR* prefix, UINT* length) override { return TextOf(&XmlNode::prefix, prefix, length); }
    HRESULT GetValue(LPCWSTR* value, UINT* length) override { return TextOf(&XmlNode::value, value, length); }
    BOOL IsEmptyElement() override { return _parser && _parser->Nodes().Current().isEmpty; }
    BOOL IsEOF() override { return _isAtEnd; }

    HRESULT GetProperty(UINT, LONG_PTR*) override { return E_NOTIMPL; }
    HRESULT SetProperty(UINT, LONG_PTR) override { return E_NOTIMPL; }
    HRESULT GetNodeType(XmlNodeType*) override { return E_NOTIMPL; }
    HRESULT MoveToFirstAttribute() override { return E_NOTIMPL; }
    HRESULT MoveToNextAttribute() override { return E_NOTIMPL; }
    HRESULT MoveToAttributeByName(LPCWSTR, LPCWSTR) override { return E_NOTIMPL; }
    HRESULT MoveToElement() override { return E_NOTIMPL; }
    HRESULT GetQualifiedName(LPCWSTR*, UINT*) override { return E_NOTIMPL; }
    HRESULT GetNamespaceUri(LPCWSTR*, UINT*) override { return E_NOTIMPL; }
    HRESULT ReadValueChunk(WCHAR*, UINT, UINT*) override { return E_NOTIMPL; }
    HRESULT GetBaseUri(LPCWSTR*, UINT*) override { return E_NOTIMPL; }
    BOOL IsDefault() override { return FALSE; }
    HRESULT GetLineNumber(UINT*) override { return E_NOTIMPL; }
    HRESULT GetLinePosition(UINT*) override { return E_NOTIMPL; }
    HRESULT GetAttributeCount(UINT*) override { return E_NOTIMPL; }
    HRESULT GetDepth(UINT*) override { return E_NOTIMPL; }

private:
    ~XmlReader() override { CloseInput(); }

    void* FindInterface(REFIID riid) override
    {
        return riid == IID_IUnknown || riid == IID_IXmlReader ? static_cast<IXmlReader*>(this) : nullptr;
    }

    void CloseInput()
    {
        _parser.reset();
        _failure = S_OK;
        _isComplete = false;
        _isAtEnd = false;
        if (_stream != nullptr)
            _stream->Release();
        _stream = nullptr;
    }

    // Reads and parses a block. Returns a failure of the stream. A failure of the parser is stored until the nodes in
    // front of it have been read.
    HRESULT ParseBlock()
    {
        ULONG read = 0;
        const HRESULT result = _stream->Read(_block.data(), static_cast<ULONG>(_block.size()), &read);
        if (FAILED(result))
            return result;
        _failure = _parser->Parse(_block.data(), read);
        _isComplete = read == 0;
        _block.resize(std::min(_block.size() * 2, kLargestBlock));
        return S_OK;
    }

    HRESULT TextOf(XmlText XmlNode::*member, LPCWSTR* text, UINT* length) const
    {
        if (text == nullptr)
            return E_INVALIDARG;
        const XmlText found = _parser ? _parser->Nodes().Current().*member : XmlText();
        *text = _parser ? _parser->Nodes().TextOf(found) : L"";
        if (length != nullptr)
            *length = static_cast<UINT>(found.length);
        return S_OK;
    }

    ISequentialStream* _stream = nullptr;
    mutable std::optional<XmlParser> _parser;
    std::vector<char> _block;
    HRESULT _failure = S_OK;
    bool _isComplete = false; // the stream has ended
    bool _isAtEnd = false;
};

} // namespace
} // namespace qxplatform

HRESULT WINAPI CreateXmlReader(REFIID riid, void** ppvObject, IMalloc* pMalloc)
{
    if (ppvObject == nullptr || pMalloc != nullptr)
        return E_INVALIDARG;
    *ppvObject = nullptr;
    auto* const reader = new (std::nothrow) qxplatform::XmlReader;
    if (reader == nullptr)
        return E_OUTOFMEMORY;
    const HRESULT result = reader->QueryInterface(riid, ppvObject);
    reader->Release();
    return result;
}
