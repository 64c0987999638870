// Builds documents of old word processors.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace qxtest
{

template <class Number>
std::string LittleEndianBytes(Number number)
{
    return {reinterpret_cast<const char*>(&number), sizeof number};
}

// A document of Word for Windows 2 whose table has these texts, and a size that differs from its own by `excess`.
inline std::string Word2Of(const std::vector<std::string>& texts, int excess = 0)
{
    std::string table;
    for (const std::string& text : texts)
        table += static_cast<char>(text.size()) + text;
    std::string file("\xDB\xA5\x2D\0", 4);
    file.resize(280);
    return file + LittleEndianBytes(std::uint32_t{284}) +
           LittleEndianBytes(static_cast<std::uint16_t>(table.size() + 2 + static_cast<std::size_t>(excess))) + table;
}

// A record of an extended document summary; the label and the value are 16-bit texts.
inline std::string WordPerfectRecord(std::uint16_t tag, std::u16string_view value)
{
    const std::u16string texts = u"label" + std::u16string(1, u'\0') + std::u16string(value) + std::u16string(1, u'\0');
    const std::string bytes(reinterpret_cast<const char*>(texts.data()), texts.size() * 2);
    return LittleEndianBytes(static_cast<std::uint16_t>(6 + bytes.size())) + LittleEndianBytes(tag) + "xx" + bytes;
}

// An index entry for data of this size at an offset from the end of the prefix.
inline std::string WordPerfectEntry(char type, std::uint32_t offset, std::uint32_t size)
{
    return std::string(1, '\0') + type + std::string(4, '\0') + LittleEndianBytes(size) +
           LittleEndianBytes(512 + offset);
}

// A WordPerfect document; the index has room for 30 entries.
inline std::string WordPerfectOf(const std::vector<std::string>& entries, std::string_view data)
{
    std::string file("\xFFWPC", 4);
    file += std::string(6, '\0') + std::string("\x02\0\0\0\x10\0", 6);
    file += std::string("\x02\0", 2) + LittleEndianBytes(static_cast<std::uint16_t>(entries.size() + 1));
    file.resize(30);
    for (const std::string& entry : entries)
        file += entry;
    file.resize(512);
    return file.append(data);
}

} // namespace qxtest
