#include "xml/xml_nodes.h"

#include <algorithm>
#include <cstdint>

namespace qxplatform
{
namespace
{

// Appends UTF-8 that the parser has checked.
void AppendUTF8(std::u16string& text, std::string_view bytes)
{
    const auto isASCII = [](char c)
    {
        return static_cast<std::uint8_t>(c) < 0x80;
    };
    for (std::size_t i = 0; i < bytes.size();)
    {
        const auto* const run = bytes.data() + i;
        const auto* const runEnd = std::find_if_not(run, bytes.data() + bytes.size(), isASCII);
        text.append(run, runEnd);
        i += static_cast<std::size_t>(runEnd - run);
        if (i == bytes.size())
            return;
        const auto lead = static_cast<std::uint8_t>(bytes[i]);
        const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        if (length > bytes.size() - i)
            return;
        char32_t character = lead & (0xFFU >> (length + 1));
        for (std::size_t k = 1; k < length; ++k)
            character = character << 6 | (static_cast<std::uint8_t>(bytes[i + k]) & 0x3FU);
        if (character >= 0x10000)
        {
            text += static_cast<char16_t>(0xD7C0 + (character >> 10));
            character = 0xDC00 + (character & 0x3FF);
        }
        text += static_cast<char16_t>(character);
        i += length;
    }
}

} // namespace

XmlNode& XmlNodeQueue::Add(XmlNodeType type, std::string_view prefix, std::string_view name)
{
    CloseText();
    XmlNode node;
    node.type = type;
    node.prefix = Append(prefix);
    node.name = Append(name);
    return _nodes.emplace_back(node);
}

void XmlNodeQueue::AddPiece(XmlNodeType type, std::string_view piece)
{
    if (_openType == XmlNodeType_None)
    {
        _openType = type;
        _openBegin = _text.size();
    }
    else if (type == XmlNodeType_Text)
        _openType = type;
    AppendUTF8(_text, piece);
}

void XmlNodeQueue::CloseText()
{
    if (_openType == XmlNodeType_None)
        return;
    XmlNode node;
    node.type = _openType;
    node.value = {_openBegin, OpenLength()};
    _nodes.push_back(node);
    _text += u'\0';
    _openType = XmlNodeType_None;
}

void XmlNodeQueue::DropText()
{
    if (_openType == XmlNodeType_None)
        return;
    _text.resize(_openBegin);
    _openType = XmlNodeType_None;
}

bool XmlNodeQueue::Next()
{
    if (_next < _nodes.size())
    {
        _current = _nodes[_next++];
        return true;
    }
    _current = {};
    _nodes.clear();
    _next = 0;
    _text.erase(0, _openType == XmlNodeType_None ? _text.size() : _openBegin);
    _openBegin = 0;
    return false;
}

LPCWSTR XmlNodeQueue::TextOf(const XmlText& text) const
{
    return text.length == 0 ? L"" : reinterpret_cast<LPCWSTR>(_text.data() + text.begin);
}

XmlText XmlNodeQueue::Append(std::string_view bytes)
{
    const std::size_t begin = _text.size();
    if (bytes.empty())
        return {};
    AppendUTF8(_text, bytes);
    const std::size_t length = _text.size() - begin;
    _text += u'\0';
    return {begin, length};
}

} // namespace qxplatform
