// Builds files of shortcuts.
#pragma once

#include "support/record_bytes.h"

#include <cstdint>
#include <string>

namespace qxtest
{

struct LinkParts
{
    std::string local, share, suffix;
    std::u16string wideLocal, wideShare, wideSuffix;
    std::uint32_t headerFlags = 3; // with a list of item identifiers, and a block about the target
};

inline std::string LinkOf(const LinkParts& parts)
{
    const auto number = [](std::size_t value)
    {
        return BytesOfRecord(static_cast<std::uint32_t>(value));
    };
    const bool isWide = !(parts.wideLocal + parts.wideShare + parts.wideSuffix).empty();
    const std::size_t headerSize = isWide ? 0x24 : 0x1C;
    std::string texts;
    const auto add = [&](const std::string& bytes)
    {
        texts += bytes;
        return number(headerSize + texts.size() - bytes.size());
    };
    const std::string local = add(parts.local + '\0'), suffix = add(parts.suffix + '\0');
    const std::string wideTexts = add(BytesOfWideText(parts.wideLocal)) + add(BytesOfWideText(parts.wideSuffix));
    const bool hasShare = !parts.share.empty() || !parts.wideShare.empty();
    std::string share = number(0);
    if (hasShare)
    {
        const std::size_t shareHeader = parts.wideShare.empty() ? 0x14 : 0x1C;
        std::string block = number(0) + number(shareHeader) + number(0) + number(0);
        if (!parts.wideShare.empty())
            block += number(shareHeader + parts.share.size() + 1) + number(0);
        block += parts.share + '\0' + BytesOfWideText(parts.wideShare);
        share = add(number(block.size() + 4) + block);
    }
    const std::string block = number(headerSize) + number((parts.local.empty() ? 0u : 1u) | (hasShare ? 2u : 0u)) +
                              number(0) + local + share + suffix + (isWide ? wideTexts : "") + texts;

    std::string file("\x4C\0\0\0\x01\x14\x02\0\0\0\0\0\xC0\0\0\0\0\0\0\x46", 20);
    file += number(parts.headerFlags);
    file.resize(0x4C);
    if (parts.headerFlags & 1)
        file += std::string("\x05\0list!", 7);
    return file + number(block.size() + 4) + block;
}

} // namespace qxtest
