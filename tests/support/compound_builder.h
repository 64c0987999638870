// Builds compound files, for tests.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace qxtest
{

// A root storage with streams, and storages with streams. The elements of each are a tree that leans to one side, so
// they must be added in the format's order: shorter names first. `gap` unused sectors in front of everything make the
// tables of a small file large.
class CompoundBuilder
{
public:
    explicit CompoundBuilder(int version = 3, std::uint32_t gap = 0)
        : _version(version),
          _sectorSize(version == 4 ? 4096 : 512),
          _table(gap, kFree)
    {
        AddElement("Root Entry", 5);
    }

    CompoundBuilder& AddStream(const std::string& name, std::string_view bytes)
    {
        const std::size_t element = AddElement(name, 2);
        if (bytes.size() >= 4096)
            SetContents(element, AddSectors(bytes), bytes.size());
        else
        {
            SetContents(element, static_cast<std::uint32_t>(_miniTable.size()), bytes.size());
            const std::size_t count = (bytes.size() + 63) / 64;
            for (std::size_t i = 1; i <= count; ++i)
                _miniTable.push_back(i < count ? static_cast<std::uint32_t>(_miniTable.size() + 1) : kEnd);
            _mini += bytes;
            _mini.resize(_miniTable.size() * 64);
        }
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
        constexpr std::uint32_t kHeaderLists = 109;
        SetContents(0, AddSectors(_mini), _mini.size());
        const std::uint32_t miniTable = AddSectors(Packed(_miniTable));
        const std::uint32_t directory = AddSectors(_elements);

        // The table describes its own sectors and those of the list behind the header's.
        const auto links = static_cast<std::uint32_t>(_sectorSize / 4);
        const auto begin = static_cast<std::uint32_t>(_table.size());
        std::uint32_t count = 1, lists = 0;
        for (std::uint32_t before = 0; before != count;)
        {
            before = count;
            lists = count > kHeaderLists ? (count - kHeaderLists + links - 2) / (links - 1) : 0;
            count = (begin + count + lists + links - 1) / links;
        }
        std::vector<std::uint32_t> own;
        for (std::uint32_t i = 0; i < count; ++i)
            own.push_back(begin + i);
        _table.resize(begin + count, 0xFFFFFFFD);
        _table.resize(begin + count + lists, 0xFFFFFFFC);
        std::string header("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8);
        header.resize(_sectorSize);
        Put(header, 24, 0x3E | static_cast<std::uint32_t>(_version) << 16);
        Put(header, 28, 0xFFFE | (_version == 4 ? 12u : 9u) << 16);
        Put(header, 32, 6);
        Put(header, 44, count);
        Put(header, 48, directory);
        Put(header, 56, 4096);
        Put(header, 60, miniTable);
        Put(header, 68, lists != 0 ? begin + count : kEnd);
        Put(header, 72, lists);
        for (std::uint32_t i = 0; i < kHeaderLists; ++i)
            Put(header, 76 + i * 4, i < count ? own[i] : kFree);
        for (std::uint32_t i = kHeaderLists, list = 1; list <= lists; ++list)
        {
            std::vector<std::uint32_t> rest;
            for (; rest.size() < links - 1; ++i)
                rest.push_back(i < count ? own[i] : kFree);
            rest.push_back(list < lists ? begin + count + list : kEnd);
            _lists += Packed(rest);
        }
        std::vector<std::uint32_t> table = _table;
        table.resize(std::size_t{count} * links, kFree);
        const std::string gap((begin * _sectorSize) - _sectors.size(), '\0');
        return header + gap + _sectors + Packed(table) + _lists;
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
        const auto index = static_cast<std::uint32_t>(element / 128);
        _elements.resize(element + 128);
        for (std::size_t i = 0; i < name.size(); ++i)
            _elements[element + i * 2] = name[i];
        _elements[element + 64] = static_cast<char>(name.size() * 2 + 2);
        _elements[element + 66] = type;
        for (const std::size_t link : {68, 72, 76})
            Put(_elements, element + link, kFree);
        if (element != 0)
            Put(_elements, _sibling != 0 ? _sibling + 72 : _parent + 76, index);
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

    std::uint32_t AddSectors(std::string_view bytes)
    {
        if (bytes.empty())
            return kEnd;
        const auto first = static_cast<std::uint32_t>(_table.size());
        const std::size_t count = (bytes.size() + _sectorSize - 1) / _sectorSize;
        for (std::size_t i = 1; i <= count; ++i)
            _table.push_back(i < count ? static_cast<std::uint32_t>(first + i) : kEnd);
        _sectors += bytes;
        _sectors.resize((_sectors.size() + _sectorSize - 1) / _sectorSize * _sectorSize);
        return first;
    }

    static std::string Packed(const std::vector<std::uint32_t>& numbers)
    {
        return {reinterpret_cast<const char*>(numbers.data()), numbers.size() * 4};
    }

    int _version;
    std::size_t _sectorSize;
    std::vector<std::uint32_t> _table;
    std::vector<std::uint32_t> _miniTable;
    std::string _sectors, _mini, _elements, _lists;
    std::size_t _parent = 0, _sibling = 0, _rootSibling = 0; // offsets of directory entries; no sibling: 0
};

} // namespace qxtest
