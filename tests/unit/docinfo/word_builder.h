// Builds documents of old word processors.
#pragma once

#include "support/record_bytes.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qxtest
{

// Returns a document of Word for Windows 2 whose table contains these texts. The table's stored size is too large by
// `excess`.
inline std::string Word2Of(const std::vector<std::string>& texts, int excess = 0)
{
    std::string table;
    for (const std::string& text : texts)
        table += static_cast<char>(text.size()) + text;
    const auto size = static_cast<std::uint16_t>(table.size() + 2 + static_cast<std::size_t>(excess));
    std::string file("\xDB\xA5\x2D\0", 4);
    file.resize(280);
    return file + BytesOfRecord(std::uint32_t{284}) + BytesOfRecord(size) + table;
}

// Returns a record of an extended document summary; its label and value are 16-bit texts.
inline std::string WordPerfectRecord(std::uint16_t tag, std::u16string_view value)
{
    const std::string texts = BytesOfWideText(u"label") + BytesOfWideText(value);
    return BytesOfRecord(static_cast<std::uint16_t>(6 + texts.size())) + BytesOfRecord(tag) + "xx" + texts;
}

// Returns an index entry for a summary of this size, which begins `offset` bytes after the prefix.
inline std::string WordPerfectEntry(std::uint32_t offset, std::uint32_t size)
{
    return std::string("\0\x12\0\0\0\0", 6) + BytesOfRecord(size) + BytesOfRecord(512 + offset);
}

// Returns a WordPerfect document; its index has room for 30 entries.
inline std::string WordPerfectOf(const std::vector<std::string>& entries, std::string_view data)
{
    std::string file("\xFFWPC\0\0\0\0\0\0\x02\0\0\0\x10\0\x02\0", 18);
    file += BytesOfRecord(static_cast<std::uint16_t>(entries.size() + 1));
    file.resize(30);
    for (const std::string& entry : entries)
        file += entry;
    file.resize(512);
    return file.append(data);
}

} // namespace qxtest
