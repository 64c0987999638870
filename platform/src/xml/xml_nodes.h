// The nodes that were parsed and not read yet.
#pragma once

#include <xmllite.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace qxplatform
{

// A text in the queue's buffer, which is followed by a terminator.
struct XmlText
{
    std::size_t begin = 0;
    std::size_t length = 0;
};

struct XmlNode
{
    XmlNodeType type = XmlNodeType_None;
    bool isEmpty = false;
    XmlText prefix;
    XmlText name;
    XmlText value;
};

// A queue of nodes, whose texts share a buffer. Text arrives in pieces; the pieces form a node once something else
// follows.
class XmlNodeQueue
{
public:
    // Appends a node without a value. The names are UTF-8.
    XmlNode& Add(XmlNodeType type, std::string_view prefix, std::string_view name);
    void AddValue(XmlNode& node, std::string_view value) { node.value = Append(value); }

    // Appends a piece to the open text, or opens a text of this type if none is open. A piece of the type Text also
    // changes the type of an open text from Whitespace to Text.
    void AddPiece(XmlNodeType type, std::string_view piece);
    // Completes the open text.
    void CloseText();
    void DropText();
    XmlNodeType OpenType() const { return _openType; }
    std::size_t OpenLength() const { return _text.size() - _openBegin; }

    // Moves to the next node. Returns false if there is none; the space of the nodes that were read is reused then.
    bool Next();
    const XmlNode& Current() const { return _current; }
    LPCWSTR TextOf(const XmlText& text) const;

private:
    XmlText Append(std::string_view bytes);

    std::vector<XmlNode> _nodes;
    std::size_t _next = 0;
    XmlNode _current;
    std::u16string _text;
    XmlNodeType _openType = XmlNodeType_None;
    std::size_t _openBegin = 0; // the open text is the end of the buffer
};

} // namespace qxplatform
