// Builds compound files, for tests.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <numeric>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qxtest
{

// Builds a compound file from a root storage with streams, and from storages with streams. The elements of each storage
// form a tree that leans to one side, so they must be added in the format's order: shorter names first. `gap` unused
// sectors at the beginning enlarge the tables of a small file.
class CompoundBuilder
{
public:
    explicit CompoundBuilder(std::uint32_t version = 3, std::uint32_t gap = 0)
        : _version(version),
          _sectorSize(version == 4 ? 4096 : 512),
          _table(gap, kFree),
          _sectors(gap * _sectorSize, '\0')
    {
        AddElement("Root Entry", 5);
    }

    CompoundBuilder& AddStream(const std::string& name, std::string_view bytes)
    {
        const std::size_t element = AddElement(name, 2);
        const std::uint32_t start = bytes.size() >= 4096 ? AddSectors(bytes) : AddChain(_miniTable, _mini, 64, bytes);
        SetContents(element, start, bytes.size());
        return *this;
    }

    // Adds a storage to the root. Following streams belong to it.
    CompoundBuilder& AddStorage(const std::string& name)
    {
        _parent = 0;
        _sibling = _rootSibling;
        _parent = AddElement(name, 1);
        _sibling = 0;
        return *this;
    }

    std::string Bytes()
    {
        constexpr std::uint32_t kInHeader = 109;
        SetContents(0, AddSectors(_mini), _mini.size());
        const std::uint32_t miniTable = AddSectors(Packed(_miniTable)), directory = AddSectors(_elements);

        // The table also covers its own sectors, and the sector that continues the header's list of them.
        const auto links = static_cast<std::uint32_t>(_sectorSize / 4);
        const auto begin = static_cast<std::uint32_t>(_table.size());
        const std::uint32_t count = begin / (links - 1) + 1;
        const std::uint32_t lists = count > kInHeader ? 1 : 0;
        _table.resize(begin + count, 0xFFFFFFFD);
        _table.resize(begin + count + lists, 0xFFFFFFFC);
        _table.resize(std::size_t{count} * links, kFree);
        std::vector<std::uint32_t> list(count);
        std::iota(list.begin(), list.end(), begin);
        list.resize(kInHeader + lists * (links - 1), kFree);

        std::string header("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8);
        header.resize(_sectorSize);
        const std::pair<std::size_t, std::uint32_t> fields[] = {{24, 0x3E | _version << 16},
            {28, 0xFFFE | (_version == 4 ? 12u : 9u) << 16}, {32, 6}, {44, count}, {48, directory}, {56, 4096},
            {60, miniTable}, {68, lists != 0 ? begin + count : kEnd}, {72, lists}};
        for (const auto& [offset, number] : fields)
            Put(header, offset, number);
        header.replace(76, kInHeader * 4, Packed(list), 0, kInHeader * 4);
        std::string bytes = header + _sectors + Packed(_table);
        if (lists != 0)
            bytes += Packed(list).substr(kInHeader * 4) + Packed({kEnd});
        return bytes;
    }

    static void Put(std::string& bytes, std::size_t offset, std::uint32_t number)
    {
        std::memcpy(&bytes[offset], &number, sizeof number);
    }

private:
    static constexpr std::uint32_t kEnd = 0xFFFFFFFE;
    static constexpr std::uint32_t kFree = 0xFFFFFFFF;

    std::size_t AddElement(const std::string& name, char type)
    {
        const std::size_t element = _elements.size();
        _elements.resize(element + 128);
        for (std::size_t i = 0; i < name.size(); ++i)
            _elements[element + i * 2] = name[i];
        _elements[element + 64] = static_cast<char>(name.size() * 2 + 2);
        _elements[element + 66] = type;
        for (const std::size_t link : {68, 72, 76})
            Put(_elements, element + link, kFree);
        if (element != 0)
            Put(_elements, _sibling != 0 ? _sibling + 72 : _parent + 76, static_cast<std::uint32_t>(element / 128));
        _sibling = element;
        if (_parent == 0)
            _rootSibling = element;
        return element;
    }

    void SetContents(std::size_t element, std::uint32_t start, std::size_t size)
    {
        Put(_elements, element + 116, start);
        Put(_elements, element + 120, static_cast<std::uint32_t>(size));
    }

    std::uint32_t AddSectors(std::string_view bytes) { return AddChain(_table, _sectors, _sectorSize, bytes); }

    // Appends the bytes to an area of sectors, links the sectors in the table, and returns the first sector.
    static std::uint32_t AddChain(
        std::vector<std::uint32_t>& table, std::string& area, std::size_t sectorSize, std::string_view bytes)
    {
        const auto first = static_cast<std::uint32_t>(table.size());
        area += bytes;
        area.resize((area.size() + sectorSize - 1) / sectorSize * sectorSize);
        while (table.size() < area.size() / sectorSize)
            table.push_back(static_cast<std::uint32_t>(table.size() + 1));
        if (bytes.empty())
            return kEnd;
        table.back() = kEnd;
        return first;
    }

    static std::string Packed(const std::vector<std::uint32_t>& numbers)
    {
        return {reinterpret_cast<const char*>(numbers.data()), numbers.size() * 4};
    }

    std::uint32_t _version;
    std::size_t _sectorSize;
    std::vector<std::uint32_t> _table, _miniTable;
    std::string _sectors, _mini, _elements;
    std::size_t _parent = 0, _sibling = 0, _rootSibling = 0; // offsets of directory entries; no sibling: 0
};

} // namespace qxtest
