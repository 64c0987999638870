// The pull reader for XML.
#include "support/com_pointer.h"
#include "support/memory_stream.h"
#include "support/readable_text.h"

#include <windows.h>

#include <xmllite.h>

#include <map>
#include <vector>

using qxtest::MemoryStream;

namespace
{

using namespace std::string_literals;

constexpr GUID kReaderId = {0x7279FC81, 0x709D, 0x4095, {0xB6, 0x3D, 0x69, 0xFE, 0x4B, 0x0D, 0x90, 0x30}};

using Reader = qxtest::ComPointer<IXmlReader>;

// Like the library, finds the function at run time.
Reader CreateReader()
{
    using Create = HRESULT(WINAPI*)(REFIID, void**, IMalloc*);
    const HMODULE library = LoadLibraryW(L"XmlLite");
    const auto create = reinterpret_cast<Create>(reinterpret_cast<void*>(GetProcAddress(library, "CreateXmlReader")));
    void* reader = nullptr;
    EXPECT_EQ(create(kReaderId, &reader, nullptr), S_OK);
    return Reader(static_cast<IXmlReader*>(reader));
}

using TextOf = HRESULT (STDMETHODCALLTYPE IXmlReader::*)(LPCWSTR*, UINT*);

std::string Get(IXmlReader& reader, TextOf function)
{
    LPCWSTR text = nullptr;
    UINT length = 0;
    EXPECT_EQ((reader.*function)(&text, &length), S_OK);
    EXPECT_EQ(text[length], 0);
    return qxtest::ReadableText({text, length});
}

// Returns names and values between marks that show the type of the node.
std::string NodeText(IXmlReader& reader, XmlNodeType type)
{
    static const std::map<XmlNodeType, std::pair<std::string, const char*>> marks = {{XmlNodeType_Element, {"<", ">"}},
        {XmlNodeType_EndElement, {"</", ">"}}, {XmlNodeType_Text, {"'", "'"}}, {XmlNodeType_Whitespace, {"\"", "\""}},
        {XmlNodeType_CDATA, {"[", "]"}}, {XmlNodeType_Comment, {"#", "#"}},
        {XmlNodeType_ProcessingInstruction, {"?", "?"}}, {XmlNodeType_XmlDeclaration, {"?", "?"}}};
    const auto& [begin, end] = marks.at(type);
    const bool isTag = type == XmlNodeType_Element || type == XmlNodeType_EndElement;
    const std::string prefix = Get(reader, &IXmlReader::GetPrefix), value = Get(reader, &IXmlReader::GetValue);
    return begin + prefix + (prefix.empty() ? "" : ":") + Get(reader, &IXmlReader::GetLocalName) +
           (isTag ? "" : value) + (reader.IsEmptyElement() ? "/" : "") + end;
}

// Returns the nodes of a document, separated by blanks, and "!" with the error or "$" for the end. White space outside
// of the root element is left out, because the layer doesn't return it.
std::string NodesOf(IXmlReader& reader)
{
    std::string all;
    int depth = 0;
    for (int count = 0; count < 10'000; ++count)
    {
        XmlNodeType type = XmlNodeType_None;
        const HRESULT result = reader.Read(&type);
        EXPECT_EQ(reader.IsEOF(), result == S_FALSE) << all;
        if (result == S_FALSE)
            return all + "$";
        if (FAILED(result))
        {
            EXPECT_EQ(reader.Read(&type), result);
            char error[16];
            std::snprintf(error, sizeof error, "!%02x", static_cast<unsigned>(result) & 0xFF);
            return all + error;
        }
        if (type == XmlNodeType_Element && !reader.IsEmptyElement())
            ++depth;
        if (type == XmlNodeType_EndElement)
            --depth;
        if (type != XmlNodeType_Whitespace || depth > 0)
            all += NodeText(reader, type) + " ";
    }
    return all + "...";
}

void ExpectNodes(const std::vector<std::pair<std::string, std::string>>& documents)
{
    for (const auto& [document, nodes] : documents)
    {
        const MemoryStream stream(document);
        {
            const Reader reader = CreateReader();
            EXPECT_EQ(reader->SetInput(stream), S_OK);
            EXPECT_GT(stream.References(), 1u);
            EXPECT_EQ(NodesOf(*reader), nodes) << document.substr(0, 100);
        }
        EXPECT_EQ(stream.References(), 1u);
    }
}

std::string Repeat(std::string_view piece, int count)
{
    std::string all;
    for (; count > 0; --count)
        all += piece;
    return all;
}

std::string Sixteen(std::string_view text)
{
    std::string wide = "\xFF\xFE";
    for (const char c : text)
        wide += {c, '\0'};
    return wide;
}

} // namespace

TEST(XmlReader, Nodes)
{
    ExpectNodes({{"<a/>", "<a/> $"}, {"<a></a>", "<a> </a> $"},
        {"<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<a>x</a>\r\n", "?xml? <a> 'x' </a> $"},
        {"<a b='1'> <c/> text <d/>\r\n</a>", "<a> \" \" <c/> ' text ' <d/> \"<a>\" </a> $"},
        {"<a>t<![CDATA[c<>]]><![CDATA[]]>u</a>", "<a> 't' [c<>] [] 'u' </a> $"},
        {"<a>x&lt;y&#65;&amp;<b>&#32;</b> &#32; </a>", "<a> 'x<yA&' <b> ' ' </b> '   ' </a> $"},
        {"<a><!-- c -->t<?pi v?>u</a>", "<a> # c # 't' ?piv? 'u' </a> $"},
        {"<x:a xmlns:x='u'><x:b>t</x:b><c xmlns='u'/></x:a>", "<x:a> <x:b> 't' </x:b> <c/> </x:a> $"},
        {"<x:a x:b='1'><x:b/></x:a>", "<a> <b/> </a> $"}, // prefixes that aren't declared
        {"\xEF\xBB\xBF<a>\xC3\xA4\r\ny\rz</a>", "<a> '<e4><a>y<a>z' </a> $"}, {Sixteen("<a>x</a>"), "<a> 'x' </a> $"},
        // errors, with the nodes that precede them
        {"<!DOCTYPE a [<!ENTITY b 'c'>]><a>&b;</a>", "!4f"}, {"<a><b>text</wrong>", "<a> <b> 'text' !3b"},
        {"<a>text]]>u</a>", "<a> !4d"}, {"<a>t<!-- -- --></a>", "<a> 't' !2f"}, {"<a b=1>", "!24"},
        {"<a/>junk", "<a/> !2d"}, {"<a>x</a><b/>", "<a> 'x' </a> !2d"}, {"", "!01"},
        {"<?xml version=\"1.0\" encoding=\"unknown\"?><a>x</a>", "!41"}});
}

// Wine accepts a document that ends too early, entities and attributes that aren't valid, and control characters; it
// doesn't read white space in front of the root element, 8-bit pages, and characters above U+FFFF in references.
#ifdef __linux__
TEST(XmlReader, NodesUnlikeWine)
{
    std::string names;
    for (int i = 0; i < 1025; ++i)
        names += " xmlns:a" + std::to_string(i) + "='u'";
    ExpectNodes({{" <a/>", "<a/> $"}, {"<a>text", "<a> 'text' !01"}, {"<a><b>t</b>", "<a> <b> 't' </b> !01"},
        {"<a>text<b", "<a> 'text' !23"}, {"<a><![CDATA[b", "<a> !01"}, {"<a>text&bad;</a>", "<a> !2d"},
        {"<a>text & more</a>", "<a> !61"}, {"<a>x\1y</a>", "<a> !2b"}, {"<a>\xE4</a>", "<a> !2b"},
        {Sixteen("<a>x") + "\x01\xD8xxxx", "<a> !02"}, // half of a surrogate pair
        {"<a b='1' b='2'/>", "!3c"}, {"<a:b:c/>", "!62"}, {"<a>&#x10000;</a>", "<a> '<d800><dc00>' </a> $"},
        {"<?xml version='1.0' encoding='ISO-8859-15'?><a>\xA4</a>", "?xml? <a> '<20ac>' </a> $"},
        {"<?xml version='1.0' encoding='windows-1251'?><a>\xE4</a>", "?xml? <a> '<434>' </a> $"},
        {"<?xml version='1.0' encoding='UTF-7'?><a>x</a>", "!41"}, {"<a" + names + "/>", "!0e"},
        {"<a b='" + std::string(400'000, 'x') + "'/>", "!0e"}, {"<a><!--" + std::string(9'000'000, 'x'), "<a> !0e"},
        {Repeat("<a>", 256) + "x<b/>", Repeat("<a> ", 256) + "'x' !81"}, // Wine loses the text
        {Repeat("<a>", 256) + Repeat("</a>", 256),                       // Wine fails beyond 256
            Repeat("<a> ", 256) + Repeat("</a> ", 256) + "$"}});
}
#endif

TEST(XmlReader, DepthAndLongTexts)
{
    const std::string text(100'000, 'x');
    ExpectNodes({{Repeat("<a>", 255) + "<b/>" + Repeat("</a>", 255),
                     Repeat("<a> ", 255) + "<b/> " + Repeat("</a> ", 255) + "$"},
        {Repeat("<a>", 256) + "<b/>", Repeat("<a> ", 256) + "!81"},
        {"<a>" + text + "&amp;" + text + "<![CDATA[" + text + "]]></a>",
            "<a> '" + text + "&" + text + "' [" + text + "] </a> $"},
        {"<a>" + Repeat("<b>x</b>", 2'000) + "</c>", "<a> " + Repeat("<b> 'x' </b> ", 2'000) + "!3b"}});
}

TEST(XmlReader, Inputs)
{
    const MemoryStream first("xxx<a/>"), second("<b/>");
    const Reader reader = CreateReader();
    XmlNodeType type = XmlNodeType_Text;
    EXPECT_EQ(reader->Read(&type), S_FALSE);
    first.Seek(3); // a stream is read from its position
    EXPECT_EQ(reader->SetInput(first), S_OK);
    EXPECT_EQ(NodesOf(*reader), "<a/> $");
    EXPECT_EQ(reader->Read(nullptr), S_FALSE);
    EXPECT_EQ(reader->SetInput(second), S_OK);
    EXPECT_EQ(reader->Read(nullptr), S_OK);
    EXPECT_EQ(Get(*reader, &IXmlReader::GetLocalName), "b");
    EXPECT_EQ(reader->SetInput(nullptr), S_OK);
    EXPECT_EQ(second.References(), 1u);
}
