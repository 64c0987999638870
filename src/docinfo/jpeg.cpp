#include "docinfo/jpeg.h"

#include "core/words.h"
#include "docinfo/tiff.h"

#include <cstring>

namespace qx
{
namespace
{

constexpr std::uint16_t kStartOfImage = 0xFFD8;
constexpr std::uint16_t kEndOfImage = 0xFFD9;
constexpr std::uint16_t kApp1 = 0xFFE1;
constexpr std::uint8_t kExif[] = {'E', 'x', 'i', 'f'};

} // namespace

int ReadJPEG(clsDocu& record, FileWindow& file)
{
    constexpr std::size_t kWord = 2;
    std::uint64_t position = 0;
    for (;;)
    {
        const std::uint8_t* const marker = file.At(position, kWord);
        if (marker == nullptr)
            return -1;
        const std::uint16_t word = BigEndian16(marker);
        position += kWord;
        if (word == kStartOfImage)
            continue;
        if (word == kEndOfImage || word < 0xFF00)
            return -1;
        const std::uint8_t* const segment = file.At(position, kWord);
        if (segment == nullptr)
            return -1;
        const std::uint16_t length = BigEndian16(segment); // includes itself
        if (length < kWord)
            return -1;
        if (word == kApp1)
            break;
        position += length;
    }
    position += kWord;
    const std::uint8_t* const name = file.At(position, sizeof kExif);
    if (name == nullptr || std::memcmp(name, kExif, sizeof kExif) != 0)
        return -1;
    constexpr std::size_t kPadding = 2;
    const std::uint64_t base = position + sizeof kExif + kPadding;
    return base <= UINT32_MAX ? ReadTIFF(record, file, static_cast<std::uint32_t>(base)) : -1;
}

} // namespace qx
