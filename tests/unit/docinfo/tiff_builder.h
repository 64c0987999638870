// Makes TIFF and JPEG files.
#pragma once

#include "docinfo/tiff.h"

#include <cstdint>
#include <initializer_list>
#include <string>
#include <utility>

namespace qxtest
{

inline int ReadTIFFFile(qx::clsDocu& record, qx::FileWindow& file)
{
    return qx::ReadTIFF(record, file, 0);
}

// Builds TIFF files. Long values precede the directory that refers to them. The file ends with the last directory.
class TiffBuilder
{
public:
    explicit TiffBuilder(bool isBigEndian) : _isBigEndian(isBigEndian)
    {
        _bytes = (isBigEndian ? "MM" : "II") + Number(42, 2) + Number(0, 4);
    }

    TiffBuilder& Add(std::uint16_t tag, std::uint16_t type, std::uint32_t value, std::uint32_t count = 1)
    {
        return AddValue(tag, type, count, Number(value, type == 1 ? 1 : type == 3 ? 2 : 4));
    }
    TiffBuilder& AddText(std::uint16_t tag, const std::string& text)
    {
        return AddValue(tag, 2, static_cast<std::uint32_t>(text.size() + 1), text + '\0');
    }
    TiffBuilder& AddRational(std::uint16_t tag, std::uint16_t type, std::uint32_t numerator, std::uint32_t denominator)
    {
        return AddValue(tag, type, 1, Number(numerator, 4) + Number(denominator, 4));
    }

    // Writes the added entries as a directory to which no other directory links, and returns its offset.
    std::uint32_t EndLoneDirectory()
    {
        const auto offset = static_cast<std::uint32_t>(_bytes.size());
        _bytes += Number(static_cast<std::uint32_t>(_entries.size() / 12), 2) + _entries + Number(0, 4);
        _entries.clear();
        return offset;
    }
    // Writes a directory and links the previous one to it.
    void EndDirectory()
    {
        const std::uint32_t offset = EndLoneDirectory();
        _bytes.replace(_next, 4, Number(offset, 4));
        _next = _bytes.size() - 4;
    }

    const std::string& Bytes() const { return _bytes; }

private:
    TiffBuilder& AddValue(std::uint16_t tag, std::uint16_t type, std::uint32_t count, std::string value)
    {
        if (value.size() > 4)
        {
            const std::string offset = Number(static_cast<std::uint32_t>(_bytes.size()), 4);
            _bytes += value;
            value = offset;
        }
        value.resize(4);
        _entries += Number(tag, 2) + Number(type, 2) + Number(count, 4) + value;
        return *this;
    }

    std::string Number(std::uint32_t value, int width) const
    {
        std::string bytes;
        for (int i = 0; i < width; ++i)
            bytes += static_cast<char>(value >> 8 * (_isBigEndian ? width - 1 - i : i));
        return bytes;
    }

    const bool _isBigEndian;
    std::string _bytes, _entries;
    std::size_t _next = 4; // where the offset of the next directory is written
};

// Returns a JPEG file of the given segments: the low byte of each marker, and the contents.
inline std::string JpegOf(std::initializer_list<std::pair<unsigned char, std::string>> segments)
{
    std::string bytes = "\xFF\xD8";
    for (const auto& [marker, contents] : segments)
    {
        const std::size_t length = contents.size() + 2;
        bytes += {'\xFF', static_cast<char>(marker), static_cast<char>(length >> 8), static_cast<char>(length)};
        bytes += contents;
    }
    return bytes + "\xFF\xD9";
}

} // namespace qxtest
