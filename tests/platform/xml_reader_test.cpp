// The pull reader for XML.
#include "platform/system_support.h"
#include "support/memory_stream.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <xmllite.h>

#include <memory>
#include <string>
#include <string_view>

using qxtest::MemoryStream;

namespace
{

using namespace std::string_literals;

constexpr GUID kReaderId = {0x7279FC81, 0x709D, 0x4095, {0xB6, 0x3D, 0x69, 0xFE, 0x4B, 0x0D, 0x90, 0x30}};

struct Releaser
{
    void operator()(IUnknown* object) const { object->Release(); }
};
using Reader = std::unique_ptr<IXmlReader, Releaser>;

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

// Characters beyond ASCII, and control characters, as hexadecimal numbers.
std::string Readable(const wchar_t* text, UINT length)
{
    std::string all;
    for (UINT i = 0; i < length; ++i)
    {
        char number[16];
        std::snprintf(number, sizeof number, "{%x}", static_cast<unsigned>(text[i]));
        all += text[i] < 32 || text[i] > 126 ? number : std::string(1, static_cast<char>(text[i]));
    }
    EXPECT_EQ(text[length], 0);
    return all;
}

using TextOf = HRESULT (STDMETHODCALLTYPE IXmlReader::*)(LPCWSTR*, UINT*);

std::string Get(IXmlReader& reader, TextOf function)
{
    LPCWSTR text = nullptr;
    UINT length = 0;
    EXPECT_EQ((reader.*function)(&text, &length), S_OK);
    return Readable(text, length);
}

std::string NodeText(IXmlReader& reader, XmlNodeType type)
{
    const std::string prefix = Get(reader, &IXmlReader::GetPrefix);
    const std::string name = (prefix.empty() ? "" : prefix + ":") + Get(reader, &IXmlReader::GetLocalName);
    const std::string value = Get(reader, &IXmlReader::GetValue);
    switch (type)
    {
    case XmlNodeType_Element:
        return "<" + name + (reader.IsEmptyElement() ? "/>" : ">");
    case XmlNodeType_EndElement:
        return "</" + name + ">";
    case XmlNodeType_Text:
        return "'" + value + "'";
    case XmlNodeType_Whitespace:
        return "\"" + value + "\"";
    case XmlNodeType_CDATA:
        return "[" + value + "]";
    case XmlNodeType_Comment:
        return "#" + value;
    default:
        return "?" + name + value;
    }
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

std::string NodesOf(std::string_view document)
{
    const MemoryStream stream(document);
    std::string nodes;
    {
        const Reader reader = CreateReader();
        EXPECT_EQ(reader->SetInput(stream), S_OK);
        EXPECT_GT(stream.References(), 1u);
        nodes = NodesOf(*reader);
    }
    EXPECT_EQ(stream.References(), 1u);
    return nodes;
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
    const std::pair<std::string, const char*> documents[] = {
        {"<a/>", "<a/> $"},
        {"<a></a>", "<a> </a> $"},
        {"<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<a>x</a>\r\n", "?xml <a> 'x' </a> $"},
        {"<a b='1'> <c/> text <d/>\r\n</a>", "<a> \" \" <c/> ' text ' <d/> \"{a}\" </a> $"},
        {"<a>t<![CDATA[c<>]]>u</a>", "<a> 't' [c<>] 'u' </a> $"},
        {"<a><![CDATA[b]]><![CDATA[]]></a>", "<a> [b] [] </a> $"},
        {"<a>x&lt;y&#65;&amp;</a>", "<a> 'x<yA&' </a> $"},
        {"<a>&#32;</a>", "<a> ' ' </a> $"},
        {"<a> &#32; </a>", "<a> '   ' </a> $"},
        {"<a><!-- c -->t<?pi v?>u</a>", "<a> # c  't' ?piv 'u' </a> $"},
        {"<x:a xmlns:x='u'><x:b>t</x:b></x:a>", "<x:a> <x:b> 't' </x:b> </x:a> $"},
        {"<a xmlns='u'>t</a>", "<a> 't' </a> $"},
        {"<x:a x:b='1'><x:b/></x:a>", "<a> <b/> </a> $"}, // prefixes that aren't declared
        {"<a>x\r\ny\rz</a>", "<a> 'x{a}y{a}z' </a> $"},
        {"\xEF\xBB\xBF<a>\xC3\xA4</a>", "<a> '{e4}' </a> $"},
        {Sixteen("<a>x</a>"), "<a> 'x' </a> $"},
        // errors, with what precedes them
        {"<!DOCTYPE a><a/>", "!4f"},
        {"<!DOCTYPE a [<!ENTITY b 'c'>]><a>&b;</a>", "!4f"},
        {"<a><b>text</wrong>", "<a> <b> 'text' !3b"},
        {"<a>text]]>u</a>", "<a> !4d"},
        {"<a>t<!-- -- --></a>", "<a> 't' !2f"},
        {"<a b=1>", "!24"},
        {"<a/>junk", "<a/> !2d"},
        {"<a>x</a><b/>", "<a> 'x' </a> !2d"},
        {"<?xml version=\"1.0\" encoding=\"unknown\"?><a>x</a>", "!41"},
        {"", "!01"},
    };
    for (const auto& [document, nodes] : documents)
        EXPECT_EQ(NodesOf(document), nodes) << document;
}

// Wine accepts a document that ends too early, entities and attributes that aren't valid, and control characters; it
// doesn't read white space in front of the root element, 8-bit pages, and characters above U+FFFF in references.
#ifdef __linux__
TEST(XmlReader, NodesUnlikeWine)
{
    const std::pair<std::string, const char*> documents[] = {
        {" <a/>", "<a/> $"},
        {"<a>text", "<a> 'text' !01"},
        {"<a><b>t</b>", "<a> <b> 't' </b> !01"},
        {"<a>text<b", "<a> 'text' !23"},
        {"<a><![CDATA[b", "<a> !01"},
        {"<a>text&bad;</a>", "<a> !2d"},
        {"<a>text & more</a>", "<a> !61"},
        {"<a>x\1y</a>", "<a> !2b"},
        {"<a>\xE4</a>", "<a> !2b"},
        {"<a b='1' b='2'/>", "!3c"},
        {"<a:b:c/>", "!62"},
        {"<a>&#x10000;</a>", "<a> '{d800}{dc00}' </a> $"},
        {"<?xml version='1.0' encoding='ISO-8859-15'?><a>\xA4</a>", "?xml <a> '{20ac}' </a> $"},
        {"<?xml version='1.0' encoding='windows-1251'?><a>\xE4</a>", "?xml <a> '{434}' </a> $"},
        {"<?xml version='1.0' encoding='UTF-7'?><a>x</a>", "!41"},
        {"<a b='" + std::string(400'000, 'x') + "'/>", "!0e"},
        {"<a><!--" + std::string(9'000'000, 'x'), "<a> !0e"},
    };
    for (const auto& [document, nodes] : documents)
        EXPECT_EQ(NodesOf(document), nodes) << document.substr(0, 100);
    std::string names;
    for (int i = 0; i < 1025; ++i)
        names += " xmlns:a" + std::to_string(i) + "='u'";
    EXPECT_EQ(NodesOf("<a" + names + "/>"), "!0e");
    EXPECT_EQ(NodesOf(Repeat("<a>", 256) + Repeat("</a>", 256)),
        Repeat("<a> ", 256) + Repeat("</a> ", 256) + "$"); // Wine fails behind 256
}
#endif

TEST(XmlReader, DepthAndLongTexts)
{
    const auto deep = [](int depth)
    {
        return Repeat("<a>", depth) + "<b/>" + Repeat("</a>", depth);
    };
    EXPECT_EQ(NodesOf(deep(255)), Repeat("<a> ", 255) + "<b/> " + Repeat("</a> ", 255) + "$");
    EXPECT_EQ(NodesOf(deep(256)), Repeat("<a> ", 256) + "!81");
    const std::string text(100'000, 'x');
    EXPECT_EQ(NodesOf("<a>" + text + "&amp;" + text + "<![CDATA[" + text + "]]></a>"),
        "<a> '" + text + "&" + text + "' [" + text + "] </a> $");
    EXPECT_EQ(NodesOf("<a>" + Repeat("<b>x</b>", 2'000) + "</c>"), "<a> " + Repeat("<b> 'x' </b> ", 2'000) + "!3b");
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
