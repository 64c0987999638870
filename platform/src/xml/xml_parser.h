// Parses XML in blocks.
#pragma once

#include "xml/xml_nodes.h"

#include <libxml/parser.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace qxplatform
{

// libxml2's push parser. It reports what it finds in a block at once, so the nodes in front of an error aren't lost, as
// they are with its pull reader.
//
// A document can't make it use much memory or time: document types, and with them entities, are refused, and tags,
// texts, nested elements and namespaces are limited.
class XmlParser
{
public:
    // Throws std::bad_alloc.
    XmlParser();
    XmlParser(const XmlParser&) = delete;
    XmlParser& operator=(const XmlParser&) = delete;

    // Parses the next block; an empty one is the end of the document. Returns the first error, which ends the parsing,
    // or S_OK.
    HRESULT Parse(const char* block, std::size_t size);

    // The nodes that were found. They precede the error.
    XmlNodeQueue& Nodes() { return _nodes; }

private:
    static constexpr std::size_t kMostDepth = 256;

    static const xmlSAXHandler& Handler();
    static void OnStartDocument(void* self);
    static void OnInternalSubset(void* self, const xmlChar* name, const xmlChar* publicId, const xmlChar* systemId);
    static void OnStartElement(void* self, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri,
        int namespaces, const xmlChar** declared, int attributes, int defaulted, const xmlChar** values);
    static void OnEndElement(void* self, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri);
    static void OnCharacters(void* self, const xmlChar* text, int length);
    static void OnCDATA(void* self, const xmlChar* text, int length);
    static void OnComment(void* self, const xmlChar* text);
    static void OnInstruction(void* self, const xmlChar* target, const xmlChar* data);
    static void OnError(void* self, xmlErrorPtr error);

    void StartElement(std::string_view prefix, std::string_view name, std::size_t namespaces);
    void EndElement(std::string_view prefix, std::string_view name);
    void AddPiece(XmlNodeType type, std::string_view piece);
    void Stop(HRESULT failure);
    void CheckSize();

    // Calls a function of the object unless the parsing has ended. No exception passes through libxml2.
    template <class Function>
    static void Guarded(void* self, const Function& function);

    XmlNodeQueue _nodes;
    HRESULT _failure = S_OK;
    bool _isEmptyElement = false; // the last element was empty, so its end isn't reported
    std::size_t _depth = 0;
    std::size_t _namespaces = 0;                           // declared by the open elements
    std::array<std::uint16_t, kMostDepth> _declarations{}; // of each open element
    std::unique_ptr<xmlParserCtxt, void (*)(xmlParserCtxt*)> _parser;
};

} // namespace qxplatform
