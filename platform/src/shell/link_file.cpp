#include "shell/link_file.h"

#include <windows.h>

#include <algorithm>
#include <cstring>

namespace qxplatform
{

namespace
{

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kHeaderSize = 0x4C;
constexpr std::uint8_t kClass[] = {0x01, 0x14, 0x02, 0, 0, 0, 0, 0, 0xC0, 0, 0, 0, 0, 0, 0, 0x46};

// Flags of the header.
constexpr std::uint32_t kHasItemList = 0x1;
constexpr std::uint32_t kHasLinkInfo = 0x2;
constexpr std::uint32_t kIgnoresLinkInfo = 0x100;

// Flags of the block about the target.
constexpr std::uint32_t kHasLocalPath = 0x1;
constexpr std::uint32_t kHasShare = 0x2;

// A block with a longer header also has Unicode texts.
constexpr std::size_t kLinkInfoHeaderSize = 0x1C;
constexpr std::uint32_t kUnicodeHeaderSize = 0x24;
constexpr std::size_t kShareHeaderSize = 0x14;

// Returns the number at an offset, or 0 if it isn't completely in the block.
std::uint32_t NumberAt(Bytes block, std::size_t offset)
{
    std::uint32_t number = 0;
    if (offset <= block.size() && block.size() - offset >= sizeof number)
        std::memcpy(&number, &block[offset], sizeof number);
    return number;
}

Bytes From(Bytes block, std::size_t offset)
{
    return block.subspan(std::min(offset, block.size()));
}

// Returns the text at an offset, which ends at a zero character or with the block. Empty for the offset 0.
std::u16string NarrowTextAt(Bytes block, std::uint32_t offset)
{
    const Bytes text = offset != 0 ? From(block, offset) : Bytes();
    const auto length = static_cast<int>(std::find(text.begin(), text.end(), 0) - text.begin());
    if (length == 0)
        return {};
    const auto* const bytes = reinterpret_cast<const char*>(text.data());
    const int size = MultiByteToWideChar(CP_ACP, 0, bytes, length, nullptr, 0);
    std::u16string wide(static_cast<std::size_t>(size), u'\0');
    MultiByteToWideChar(CP_ACP, 0, bytes, length, reinterpret_cast<wchar_t*>(wide.data()), size);
    return wide;
}

std::u16string WideTextAt(Bytes block, std::uint32_t offset)
{
    const Bytes text = offset != 0 ? From(block, offset) : Bytes();
    std::u16string wide;
    for (std::size_t i = 0; i + 1 < text.size() && (text[i] | text[i + 1]) != 0; i += 2)
        wide += static_cast<char16_t>(text[i] | text[i + 1] << 8);
    return wide;
}

// Returns a text that may be stored as Unicode and in the code page. The Unicode form takes precedence.
std::u16string TextAt(Bytes block, std::uint32_t narrow, std::uint32_t wide)
{
    std::u16string text = WideTextAt(block, wide);
    return text.empty() ? NarrowTextAt(block, narrow) : text;
}

Bytes CutToSize(Bytes block)
{
    return block.first(std::min<std::size_t>(block.size(), NumberAt(block, 0)));
}

std::u16string ShareName(Bytes share)
{
    share = CutToSize(share);
    const std::uint32_t narrow = NumberAt(share, 8);
    return TextAt(share, narrow, narrow > kShareHeaderSize ? NumberAt(share, 0x14) : 0);
}

LinkTarget TargetIn(Bytes block)
{
    block = CutToSize(block);
    LinkTarget target;
    if (block.size() < kLinkInfoHeaderSize)
        return target;
    const bool hasUnicode = NumberAt(block, 4) >= kUnicodeHeaderSize;
    const std::uint32_t flags = NumberAt(block, 8);
    const std::u16string suffix = TextAt(block, NumberAt(block, 0x18), hasUnicode ? NumberAt(block, 0x20) : 0);
    if (flags & kHasLocalPath)
    {
        target.local = TextAt(block, NumberAt(block, 0x10), hasUnicode ? NumberAt(block, 0x1C) : 0);
        if (!target.local.empty())
            target.local += suffix;
    }
    if (const std::uint32_t share = NumberAt(block, 0x14); (flags & kHasShare) && share != 0)
    {
        target.share = ShareName(From(block, share));
        if (!target.share.empty() && !suffix.empty())
            target.share += u'\\' + suffix;
    }
    return target;
}

} // namespace

std::optional<LinkTarget> ParseLink(Bytes file)
{
    if (file.size() < kHeaderSize || NumberAt(file, 0) != kHeaderSize ||
        !std::equal(std::begin(kClass), std::end(kClass), &file[4]))
        return std::nullopt;
    const std::uint32_t flags = NumberAt(file, 0x14);
    std::size_t at = kHeaderSize;
    if (flags & kHasItemList)
        at += file.size() - at >= 2 ? 2u + (file[at] | file[at + 1] << 8) : 2u;
    if (!(flags & kHasLinkInfo) || (flags & kIgnoresLinkInfo))
        return LinkTarget();
    return TargetIn(From(file, at));
}

} // namespace qxplatform
