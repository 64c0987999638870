#include "xml/xml_parser.h"

#include "base/mutex.h"
#include "xml/xml_errors.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <mutex>
#include <new>

#include <strings.h>

namespace qxplatform
{
namespace
{

// Limits the time for a tag: the parser compares each attribute with all others.
constexpr std::ptrdiff_t kMostTagBytes = 256 * 1024;
// Limits the memory: the parser buffers a comment or instruction until it is complete.
constexpr std::ptrdiff_t kMostMarkupBytes = 8 * 1024 * 1024;
constexpr std::size_t kMostTextUnits = 16 * 1024 * 1024;
// Limits the time for a prefix: the parser searches all namespaces for it.
constexpr std::size_t kMostNamespaces = 1024;

std::string_view TextOf(const xmlChar* text)
{
    return text != nullptr ? std::string_view(reinterpret_cast<const char*>(text)) : std::string_view();
}

std::string_view TextOf(const xmlChar* text, int length)
{
    return {reinterpret_cast<const char*>(text), static_cast<std::size_t>(length)};
}

bool IsBlank(std::string_view text)
{
    return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

// Returns true for the encodings of the system's reader and for 8-bit pages. The C library has many more, some of them
// with shift states.
bool IsSupportedEncoding(const char* name)
{
    static constexpr std::string_view kBegins[] = {"utf-8", "utf-16", "us-ascii", "iso-8859-", "windows-125"};
    return name == nullptr ||
           std::any_of(std::begin(kBegins), std::end(kBegins),
               [=](std::string_view begin) { return strncasecmp(name, begin.data(), begin.size()) == 0; });
}

void IgnoreError(void*, xmlErrorPtr) {}
void IgnoreMessage(void*, const char*, ...) {}

// Suppresses messages. Errors of encodings don't belong to a parser and are passed to the thread's handlers, which
// write them to stderr unless the program has set its own.
class WithoutMessages
{
public:
    WithoutMessages()
    {
        xmlSetStructuredErrorFunc(nullptr, IgnoreError);
        xmlSetGenericErrorFunc(nullptr, IgnoreMessage);
    }
    WithoutMessages(const WithoutMessages&) = delete;
    WithoutMessages& operator=(const WithoutMessages&) = delete;
    ~WithoutMessages()
    {
        xmlSetStructuredErrorFunc(_errorContext, _error);
        xmlSetGenericErrorFunc(_messageContext, _message);
    }

private:
    const xmlStructuredErrorFunc _error = xmlStructuredError;
    void* const _errorContext = xmlStructuredErrorContext;
    const xmlGenericErrorFunc _message = xmlGenericError;
    void* const _messageContext = xmlGenericErrorContext;
};

void FreeParser(xmlParserCtxt* parser)
{
    xmlFreeDoc(parser->myDoc);
    parser->myDoc = nullptr;
    xmlFreeParserCtxt(parser);
}

} // namespace

template <class Function>
void XmlParser::Guarded(void* self, const Function& function)
{
    auto& parser = *static_cast<XmlParser*>(self);
    if (parser._failure != S_OK)
        return;
    try
    {
        function(parser);
    }
    catch (const std::bad_alloc&)
    {
        parser.Stop(E_OUTOFMEMORY);
    }
}

const xmlSAXHandler& XmlParser::Handler()
{
    static constexpr xmlSAXHandler kHandler = []
    {
        xmlSAXHandler functions = {};
        functions.initialized = XML_SAX2_MAGIC;
        functions.startDocument = OnStartDocument;
        functions.internalSubset = OnInternalSubset;
        functions.startElementNs = OnStartElement;
        functions.endElementNs = OnEndElement;
        functions.characters = OnCharacters;
        functions.ignorableWhitespace = OnCharacters;
        functions.cdataBlock = OnCDATA;
        functions.comment = OnComment;
        functions.processingInstruction = OnInstruction;
        functions.serror = OnError;
        return functions;
    }();
    return kHandler;
}

XmlParser::XmlParser() : _parser(nullptr, FreeParser)
{
    {
        static Mutex lock;
        const std::lock_guard guard(lock);
        xmlInitParser(); // does nothing from the second call on
    }
    xmlSAXHandler handler = Handler();
    _parser.reset(xmlCreatePushParserCtxt(&handler, this, nullptr, 0, nullptr));
    if (_parser == nullptr)
        throw std::bad_alloc();
    xmlCtxtUseOptions(_parser.get(), XML_PARSE_NONET);
}

HRESULT XmlParser::Parse(const char* block, std::size_t size)
{
    if (_failure != S_OK)
        return _failure;
    const WithoutMessages quiet;
    const bool isEnd = size == 0;
    const int error = xmlParseChunk(_parser.get(), isEnd ? "" : block, static_cast<int>(size), isEnd ? 1 : 0);
    if (_failure == S_OK && error == XML_ERR_INVALID_ENCODING)
    {
        _nodes.DropText();
        _failure = XmlResult(error);
    }
    if (_failure == S_OK)
        CheckSize();
    if (_failure == S_OK && isEnd && (_depth != 0 || _parser->wellFormed == 0))
        _failure = kInputEnd;
    if (_failure != S_OK)
        xmlStopParser(_parser.get());
    return _failure;
}

// Limits the incomplete markup that the parser buffers.
void XmlParser::CheckSize()
{
    const xmlParserInput* const input = _parser->input;
    const std::ptrdiff_t left = input != nullptr ? input->end - input->cur : 0;
    const bool isTag = _parser->instate == XML_PARSER_START_TAG;
    if (left <= (isTag ? kMostTagBytes : kMostMarkupBytes))
        return;
    if (isTag)
        _nodes.CloseText();
    _failure = E_OUTOFMEMORY;
}

void XmlParser::Stop(HRESULT failure)
{
    _failure = failure;
    xmlStopParser(_parser.get());
}

void XmlParser::OnStartDocument(void* self)
{
    Guarded(self,
        [](XmlParser& parser)
        {
            constexpr int kNoDeclaration = -1;
            if (!IsSupportedEncoding(reinterpret_cast<const char*>(parser._parser->encoding)))
                parser.Stop(kEncodingName);
            else if (parser._parser->input->standalone != kNoDeclaration)
                parser._nodes.Add(XmlNodeType_XmlDeclaration, {}, "xml");
        });
}

void XmlParser::OnInternalSubset(void* self, const xmlChar*, const xmlChar*, const xmlChar*)
{
    Guarded(self, [](XmlParser& parser) { parser.Stop(kTypeProhibited); });
}

void XmlParser::OnStartElement(void* self, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri,
    int namespaces, const xmlChar**, int, int, const xmlChar**)
{
    // Like the system's reader, doesn't return a prefix that isn't declared.
    Guarded(self,
        [=](XmlParser& parser)
        {
            parser.StartElement(uri != nullptr ? TextOf(prefix) : std::string_view(), TextOf(name),
                static_cast<std::size_t>(namespaces));
        });
}

void XmlParser::StartElement(std::string_view prefix, std::string_view name, std::size_t namespaces)
{
    _nodes.CloseText();
    if (_depth == kMostDepth)
        return Stop(kDepthExceeded);
    if (_namespaces + namespaces > kMostNamespaces)
        return Stop(E_OUTOFMEMORY);
    _declarations[_depth++] = static_cast<std::uint16_t>(namespaces);
    _namespaces += namespaces;
    // The parser is at the end of the tag, or at an error.
    const xmlChar* const end = _parser->input->cur;
    _isEmptyElement = end[0] == '/' && end[1] == '>';
    if (!_isEmptyElement && end[0] != '>')
        return;
    _nodes.Add(XmlNodeType_Element, prefix, name).isEmpty = _isEmptyElement;
}

void XmlParser::OnEndElement(void* self, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri)
{
    Guarded(self, [=](XmlParser& parser)
        { parser.EndElement(uri != nullptr ? TextOf(prefix) : std::string_view(), TextOf(name)); });
}

void XmlParser::EndElement(std::string_view prefix, std::string_view name)
{
    if (_depth > 0)
        _namespaces -= _declarations[--_depth];
    if (!_isEmptyElement)
        _nodes.Add(XmlNodeType_EndElement, prefix, name);
    _isEmptyElement = false;
}

void XmlParser::OnCharacters(void* self, const xmlChar* text, int length)
{
    Guarded(self,
        [=](XmlParser& parser)
        {
            // A blank that is a character reference counts as text.
            const std::string_view piece = TextOf(text, length);
            const bool isBlank = IsBlank(piece) && parser._parser->input->cur[-1] != ';';
            if (parser._nodes.OpenType() == XmlNodeType_CDATA)
                parser._nodes.CloseText();
            parser.AddPiece(isBlank ? XmlNodeType_Whitespace : XmlNodeType_Text, piece);
        });
}

void XmlParser::OnCDATA(void* self, const xmlChar* text, int length)
{
    Guarded(self,
        [=](XmlParser& parser)
        {
            // The parser reports a long section in pieces, of which only the first follows the start of the section.
            constexpr std::string_view kBegin = "<![CDATA[";
            const xmlParserInput& input = *parser._parser->input;
            const bool begins = input.cur - input.base >= static_cast<std::ptrdiff_t>(kBegin.size()) &&
                                std::memcmp(input.cur - kBegin.size(), kBegin.data(), kBegin.size()) == 0;
            if (begins || parser._nodes.OpenType() != XmlNodeType_CDATA)
                parser._nodes.CloseText();
            parser.AddPiece(XmlNodeType_CDATA, TextOf(text, length));
        });
}

void XmlParser::AddPiece(XmlNodeType type, std::string_view piece)
{
    _nodes.AddPiece(type, piece);
    if (_nodes.OpenLength() > kMostTextUnits)
        Stop(E_OUTOFMEMORY);
}

void XmlParser::OnComment(void* self, const xmlChar* text)
{
    Guarded(self, [=](XmlParser& parser)
        { parser._nodes.AddValue(parser._nodes.Add(XmlNodeType_Comment, {}, {}), TextOf(text)); });
}

void XmlParser::OnInstruction(void* self, const xmlChar* target, const xmlChar* data)
{
    Guarded(self,
        [=](XmlParser& parser)
        {
            XmlNode& node = parser._nodes.Add(XmlNodeType_ProcessingInstruction, {}, TextOf(target));
            parser._nodes.AddValue(node, TextOf(data));
        });
}

// Stores the first error. An error inside a text leaves the text incomplete, so the text isn't reported; any other
// error follows the text.
void XmlParser::OnError(void* self, xmlErrorPtr error)
{
    if (error->level != XML_ERR_FATAL && error->code != XML_NS_ERR_QNAME)
        return;
    Guarded(self,
        [=](XmlParser& parser)
        {
            const xmlParserInputState state = parser._parser->instate;
            const bool isInText = state == XML_PARSER_CDATA_SECTION ||
                                  (state == XML_PARSER_CONTENT && error->code != XML_ERR_DOCUMENT_END &&
                                      error->code != XML_ERR_INTERNAL_ERROR);
            if (isInText)
                parser._nodes.DropText();
            parser._nodes.CloseText();
            // libxml2 reports content after the root element with the same code as an incomplete document.
            const bool hasJunkBehind = error->code == XML_ERR_DOCUMENT_END && state == XML_PARSER_EPILOG;
            parser._failure = hasJunkBehind ? kSyntaxError : XmlResult(error->code);
        });
}

} // namespace qxplatform
