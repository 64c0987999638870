// Makes TIFF and JPEG files.
#pragma once

#include "docinfo/tiff.h"

#include <cstdint>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

namespace qxtest
{

inline int ReadTIFFFile(qx::clsDocu& record, qx::FileWindow& file)
{
    return qx::ReadTIFF(record, file, 0);
}

// Directories follow each other from offset 8 on; each is followed by its values.
class TiffBuilder
{
public:
    explicit TiffBuilder(bool isBigEndian) : _isBigEndian(isBigEndian)
    {
        _bytes = isBigEndian ? "MM" : "II";
        Put(42, 2);
        Put(8, 4);
    }

    // A number of any width is left-aligned in its field.
    TiffBuilder& Add(std::uint16_t tag, std::uint16_t type, std::uint32_t value, std::uint32_t count = 1)
    {
        const unsigned width = type == 1 ? 1 : type == 3 ? 2 : 4;
        const unsigned shift = _isBigEndian ? 8 * (4 - width) : 0;
        _entries.push_back({tag, type, count, value << shift, "", false});
        return *this;
    }

    TiffBuilder& AddText(std::uint16_t tag, const std::string& text)
    {
        return AddValue(tag, 2, static_cast<std::uint32_t>(text.size() + 1), text + '\0');
    }

    TiffBuilder& AddRational(std::uint16_t tag, std::uint16_t type, std::uint32_t numerator, std::uint32_t denominator)
    {
        return AddValue(tag, type, 1, Number(numerator, 4) + Number(denominator, 4));
    }

    // Refers to the next directory of this file as the EXIF directory.
    TiffBuilder& AddExif()
    {
        _entries.push_back({34665, 4, 1, 0, "", true});
        return *this;
    }

    static constexpr std::int64_t kFollowing = -1;

    // `next` is the offset of the next directory, 0 for none.
    void EndDirectory(std::int64_t next = kFollowing)
    {
        _lastNext = _bytes.size() + 2 + _entries.size() * 12;
        std::size_t values = _lastNext + 4;
        std::string tail;
        Put(static_cast<std::uint32_t>(_entries.size()), 2);
        std::size_t end = values;
        for (const Entry& entry : _entries)
            end += entry.bytes.size() > 4 ? entry.bytes.size() : 0;
        for (const Entry& entry : _entries)
        {
            Put(entry.tag, 2);
            Put(entry.type, 2);
            Put(entry.count, 4);
            if (entry.bytes.size() > 4)
            {
                Put(static_cast<std::uint32_t>(values + tail.size()), 4);
                tail += entry.bytes;
            }
            else if (!entry.bytes.empty())
                _bytes += entry.bytes + std::string(4 - entry.bytes.size(), '\0');
            else
                Put(entry.isExif ? static_cast<std::uint32_t>(end) : entry.value, 4);
        }
        _isLast = next == kFollowing;
        Put(static_cast<std::uint32_t>(next != kFollowing ? next : static_cast<std::int64_t>(end)), 4);
        _bytes += tail;
        _entries.clear();
    }

    std::string Bytes() const
    {
        std::string bytes = _bytes;
        if (_isLast)
            bytes.replace(_lastNext, 4, 4, '\0');
        return bytes;
    }

private:
    struct Entry
    {
        std::uint16_t tag;
        std::uint16_t type;
        std::uint32_t count;
        std::uint32_t value;
        std::string bytes;
        bool isExif;
    };

    TiffBuilder& AddValue(std::uint16_t tag, std::uint16_t type, std::uint32_t count, std::string bytes)
    {
        _entries.push_back({tag, type, count, 0, std::move(bytes), false});
        return *this;
    }

    std::string Number(std::uint32_t value, int width) const
    {
        std::string bytes;
        for (int i = 0; i < width; ++i)
            bytes += static_cast<char>(value >> 8 * (_isBigEndian ? width - 1 - i : i));
        return bytes;
    }

    void Put(std::uint32_t value, int width) { _bytes += Number(value, width); }

    const bool _isBigEndian;
    std::string _bytes;
    std::vector<Entry> _entries;
    std::size_t _lastNext = 0;
    bool _isLast = false;
};

// A JPEG file of the given segments: the low byte of the marker, and the contents.
inline std::string JpegOf(std::initializer_list<std::pair<unsigned char, std::string>> segments)
{
    std::string bytes = "\xFF\xD8";
    for (const auto& [marker, contents] : segments)
    {
        const std::size_t length = contents.size() + 2;
        bytes += '\xFF';
        bytes += static_cast<char>(marker);
        bytes += static_cast<char>(length >> 8);
        bytes += static_cast<char>(length);
        bytes += contents;
    }
    return bytes + "\xFF\xD9";
}

} // namespace qxtest
