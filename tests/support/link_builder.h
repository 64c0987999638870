// Builds files of shortcuts.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace qxtest
{

struct LinkParts
{
    std::string local;
    std::string share;
    std::string suffix;
    std::u16string wideLocal;
    std::u16string wideShare;
    std::u16string wideSuffix;
    std::uint32_t headerFlags = 3; // with a list of item identifiers, and a block about the target
};

inline std::string LinkNumber(std::size_t number)
{
    const auto bytes = static_cast<std::uint32_t>(number);
    return {reinterpret_cast<const char*>(&bytes), sizeof bytes};
}

inline std::string WideBytes(std::u16string_view text)
{
    return std::string(reinterpret_cast<const char*>(text.data()), text.size() * 2) + std::string(2, '\0');
}

inline std::string LinkOf(const LinkParts& parts)
{
    const bool isWide = !(parts.wideLocal + parts.wideShare + parts.wideSuffix).empty();
    const std::size_t headerSize = isWide ? 0x24 : 0x1C;
    std::string texts;
    const auto add = [&texts](const std::string& bytes, std::size_t base)
    {
        const std::size_t offset = base + texts.size();
        texts += bytes;
        return LinkNumber(offset);
    };
    const std::string zero(1, '\0');
    const std::string local = add(parts.local + zero, headerSize), suffix = add(parts.suffix + zero, headerSize);
    const std::string wideLocal = add(WideBytes(parts.wideLocal), headerSize);
    const std::string wideSuffix = add(WideBytes(parts.wideSuffix), headerSize);
    std::string share(4, '\0');
    const bool hasShare = !parts.share.empty() || !parts.wideShare.empty();
    if (hasShare)
    {
        const std::size_t shareHeader = parts.wideShare.empty() ? 0x14 : 0x1C;
        std::string block = LinkNumber(0) + LinkNumber(shareHeader) + LinkNumber(0) + LinkNumber(0);
        if (!parts.wideShare.empty())
            block += LinkNumber(shareHeader + parts.share.size() + 1) + LinkNumber(0);
        block += parts.share + zero + WideBytes(parts.wideShare);
        share = add(LinkNumber(block.size() + 4) + block, headerSize);
    }
    std::string block = LinkNumber(headerSize) + LinkNumber((parts.local.empty() ? 0u : 1u) | (hasShare ? 2u : 0u)) +
                        LinkNumber(0) + local + share + suffix;
    if (isWide)
        block += wideLocal + wideSuffix;
    block += texts;

    std::string file("\x4C\0\0\0\x01\x14\x02\0\0\0\0\0\xC0\0\0\0\0\0\0\x46", 20);
    file += LinkNumber(parts.headerFlags);
    file.resize(0x4C);
    if (parts.headerFlags & 1)
        file += std::string("\x05\0list!", 7);
    return file + LinkNumber(block.size() + 4) + block;
}

} // namespace qxtest
