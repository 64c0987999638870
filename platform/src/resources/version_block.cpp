#include "resources/version_block.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "base/text.h"

namespace qxplatform
{

namespace
{

struct Head
{
    WORD length;      // of the node including its children
    WORD valueLength; // in characters if the value is a text
    WORD isText;
};

// Positions are relative to the start of the block, because everything in it is aligned to 4 bytes from there.
struct Node
{
    std::size_t begin;
    std::size_t end;
    std::u16string key;
    std::size_t value; // where the value is, or would be
    std::size_t valueEnd;
    UINT valueLength;
};

std::size_t AlignedWithin(std::size_t place, std::size_t end)
{
    return std::min((place + 3) / 4 * 4, end);
}

std::optional<Node> ReadNode(std::span<const std::byte> block, std::size_t begin, std::size_t limit)
{
    Head head;
    if (limit - begin < sizeof head)
        return std::nullopt;
    std::memcpy(&head, block.data() + begin, sizeof head);
    if (head.length < sizeof head || head.length > limit - begin)
        return std::nullopt;
    Node node{begin, begin + head.length, {}, 0, 0, head.valueLength};
    std::size_t place = begin + sizeof head;
    for (;;)
    {
        char16_t unit;
        if (node.end - place < sizeof unit)
            return std::nullopt;
        std::memcpy(&unit, block.data() + place, sizeof unit);
        place += sizeof unit;
        if (unit == 0)
            break;
        node.key += unit;
    }
    node.value = AlignedWithin(place, node.end);
    const std::size_t unitSize = head.isText != 0 ? sizeof(WCHAR) : 1;
    const std::size_t room = (node.end - node.value) / unitSize;
    node.valueLength = static_cast<UINT>(std::min<std::size_t>(head.valueLength, room));
    node.valueEnd = node.value + node.valueLength * unitSize;
    return node;
}

std::optional<Node> FindChild(std::span<const std::byte> block, const Node& parent, std::u16string_view key)
{
    for (std::size_t place = AlignedWithin(parent.valueEnd, parent.end); place < parent.end;)
    {
        std::optional<Node> child = ReadNode(block, place, parent.end);
        if (!child || EqualWithoutCase(child->key, key))
            return child;
        place = AlignedWithin(child->end, parent.end);
    }
    return std::nullopt;
}

} // namespace

std::optional<VersionValue> FindVersionValue(std::span<const std::byte> block, std::u16string_view path)
{
    std::optional<Node> node = ReadNode(block, 0, block.size());
    while (node && !path.empty())
    {
        const std::size_t end = std::min(path.find(u'\\'), path.size());
        const std::u16string_view key = path.substr(0, end);
        path.remove_prefix(std::min(end + 1, path.size()));
        if (!key.empty())
            node = FindChild(block, *node, key);
    }
    if (!node)
        return std::nullopt;
    return VersionValue{block.data() + node->value, node->valueLength};
}

std::size_t VersionBlockSize(const void* block, std::size_t size)
{
    WORD length = 0;
    if (size >= sizeof length)
        std::memcpy(&length, block, sizeof length);
    return std::min<std::size_t>(length, size);
}

} // namespace qxplatform
