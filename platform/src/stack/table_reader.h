// Reads the encoded values of unwind tables, within the bounds of the table.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace qxplatform
{

// A part of memory that contains a table.
struct TableBytes
{
    const std::uint8_t* begin = nullptr;
    const std::uint8_t* end = nullptr;

    std::size_t Size() const { return static_cast<std::size_t>(end - begin); }
    bool Contains(const std::uint8_t* at) const { return at >= begin && at < end; }
};

// Reads forwards. A read beyond the end returns 0 and sets the failed state, which remains.
class TableReader
{
public:
    explicit TableReader(TableBytes bytes) : _at(bytes.begin), _end(bytes.end) {}

    const std::uint8_t* At() const { return _at; }
    std::size_t Left() const { return static_cast<std::size_t>(_end - _at); }
    bool IsAtEnd() const { return _at >= _end; }
    bool HasFailed() const { return _hasFailed; }
    void Fail()
    {
        _hasFailed = true;
        _at = _end;
    }

    template <class Number>
    Number Read()
    {
        Number number = 0;
        if (Left() < sizeof number)
        {
            Fail();
            return 0;
        }
        std::memcpy(&number, _at, sizeof number);
        _at += sizeof number;
        return number;
    }

    std::uint64_t ReadUleb()
    {
        std::uint64_t value = 0;
        for (unsigned shift = 0;; shift += 7)
        {
            const std::uint8_t byte = Read<std::uint8_t>();
            if (shift < 64)
                value |= std::uint64_t{byte & 0x7Fu} << shift;
            if (byte < 0x80)
                return value;
        }
    }

    std::int64_t ReadSleb()
    {
        std::uint64_t value = 0;
        for (unsigned shift = 0;;)
        {
            const std::uint8_t byte = Read<std::uint8_t>();
            if (shift < 64)
                value |= std::uint64_t{byte & 0x7Fu} << shift;
            shift += 7;
            if (byte >= 0x80)
                continue;
            if (shift < 64 && (byte & 0x40) != 0)
                value |= ~std::uint64_t{0} << shift;
            return static_cast<std::int64_t>(value);
        }
    }

    // Skips bytes and returns the bytes skipped.
    TableBytes Take(std::uint64_t size)
    {
        if (size > Left())
        {
            Fail();
            return {_at, _at};
        }
        const TableBytes taken{_at, _at + size};
        _at += size;
        return taken;
    }

    // Reads a pointer in one of the encodings of exception tables (DW_EH_PE_...). `dataBase` is the base of
    // data-relative pointers.
    std::uintptr_t ReadPointer(std::uint8_t encoding, std::uintptr_t dataBase)
    {
        constexpr std::uint8_t kOmitted = 0xFF;
        if (encoding == kOmitted)
            return 0;
        const auto place = reinterpret_cast<std::uintptr_t>(_at);
        std::uintptr_t value = ReadValue(encoding & 0x0F);
        constexpr std::uint8_t kRelativeToPlace = 0x10;
        constexpr std::uint8_t kRelativeToData = 0x30;
        constexpr std::uint8_t kIndirect = 0x80;
        switch (encoding & 0x70)
        {
        case 0:
            break;
        case kRelativeToPlace:
            value += place;
            break;
        case kRelativeToData:
            value += dataBase;
            break;
        default:
            Fail();
        }
        if ((encoding & kIndirect) != 0) // only used for personality routines, which aren't called here
            Fail();
        return _hasFailed ? 0 : value;
    }

    // Reads a value without a base, for example a size.
    std::uintptr_t ReadValue(unsigned format)
    {
        switch (format)
        {
        case 0x00:
        case 0x04:
        case 0x0C:
            return Read<std::uint64_t>();
        case 0x01:
            return ReadUleb();
        case 0x02:
            return Read<std::uint16_t>();
        case 0x03:
            return Read<std::uint32_t>();
        case 0x09:
            return static_cast<std::uintptr_t>(ReadSleb());
        case 0x0A:
            return static_cast<std::uintptr_t>(std::intptr_t{Read<std::int16_t>()});
        case 0x0B:
            return static_cast<std::uintptr_t>(std::intptr_t{Read<std::int32_t>()});
        default:
            Fail();
            return 0;
        }
    }

private:
    const std::uint8_t* _at;
    const std::uint8_t* _end;
    bool _hasFailed = false;
};

} // namespace qxplatform
