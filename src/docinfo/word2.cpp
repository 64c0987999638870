#include "docinfo/word2.h"

#include "core/words.h"
#include "docinfo/file_text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace qx
{
namespace
{

constexpr std::uint64_t kTableOffset = 280; // position of the table's offset

// The fields for the texts of the table, in order; null for a text that isn't used.
constexpr clsVariant clsDocu::*kWord2Fields[] = {nullptr, nullptr, &clsDocu::Title, &clsDocu::Subject,
    &clsDocu::Keywords, &clsDocu::Comments, &clsDocu::Author, &clsDocu::LastAuthor};

} // namespace

int ReadWord2(clsDocu& record, FileWindow& file)
{
    const std::uint8_t* const offset = file.At(kTableOffset, 4);
    if (offset == nullptr)
        return -1;
    const std::uint64_t begin = LittleEndian32(offset);
    const std::uint8_t* const head = file.At(begin, 2);
    if (head == nullptr)
        return -1;
    const std::size_t size = LittleEndian16(head); // size of the table, including these two bytes
    if (size < 2)
        return -1;
    const std::uint8_t* at = file.At(begin + 2, size - 2);
    if (at == nullptr)
        return -1;

    const std::uint8_t* const end = at + (size - 2);
    for (const auto field : kWord2Fields)
    {
        if (at == end)
            break;
        const std::size_t length = std::min<std::size_t>(*at, static_cast<std::size_t>(end - at) - 1);
        if (field != nullptr)
            clsDocu::SetText(record.*field, TextOfBytes(at + 1, length));
        at += 1 + length;
    }
    return 0;
}

} // namespace qx
