// Images of modules and version blocks, made byte by byte.
#pragma once

#include <windows.h>

#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

namespace qxtest
{

class Bytes
{
public:
    explicit Bytes(std::size_t size = 0) : _bytes(size) {}

    template <class Value>
    void Put(std::size_t place, Value value)
    {
        std::memcpy(_bytes.data() + place, &value, sizeof value);
    }
    void PutText(std::size_t place, std::string_view text) { text.copy(reinterpret_cast<char*>(&_bytes[place]), 99); }

    void Add(std::uint16_t value) { AddAll(&value, sizeof value); }
    void Add(std::wstring_view text) // with its end
    {
        AddAll(text.data(), text.size() * sizeof(wchar_t));
        Add(std::uint16_t{0});
    }
    void Add(const Bytes& other)
    {
        Align();
        AddAll(other._bytes.data(), other._bytes.size());
    }
    void Align() { _bytes.resize((_bytes.size() + 3) / 4 * 4); }

    std::size_t Size() const { return _bytes.size(); }
    const std::uint8_t* Data() const { return _bytes.data(); }

private:
    void AddAll(const void* bytes, std::size_t size)
    {
        const auto* const first = static_cast<const std::uint8_t*>(bytes);
        _bytes.insert(_bytes.end(), first, first + size);
    }

    std::vector<std::uint8_t> _bytes;
};

// A node of a version block.
inline Bytes VersionNode(std::wstring_view key, const std::vector<Bytes>& children)
{
    Bytes node(3 * sizeof(std::uint16_t));
    node.Put(4, std::uint16_t{1});
    node.Add(key);
    node.Align();
    for (const Bytes& child : children)
        node.Add(child);
    node.Put(0, static_cast<std::uint16_t>(node.Size()));
    return node;
}

inline Bytes VersionText(std::wstring_view key, std::wstring_view text)
{
    Bytes node = VersionNode(key, {});
    node.Add(text);
    node.Put(0, static_cast<std::uint16_t>(node.Size()));
    node.Put(2, static_cast<std::uint16_t>(text.size() + 1));
    return node;
}

// The translation 0409, 04b0.
inline Bytes Translation()
{
    Bytes value = VersionNode(L"Translation", {});
    value.Add(std::uint16_t{0x0409});
    value.Add(std::uint16_t{0x04B0});
    value.Put(0, static_cast<std::uint16_t>(value.Size()));
    value.Put(2, std::uint16_t{4});
    value.Put(4, std::uint16_t{0});
    return VersionNode(L"VarFileInfo", {value});
}

// A loaded image with one section and its resources at `resources`, where the test puts them.
class FakeImage : public Bytes
{
public:
    static constexpr std::uint32_t resources = 0x1000;
    static constexpr std::uint32_t size = 0x2000;
    static constexpr std::size_t header = 0x80;
    static constexpr std::size_t optional = header + 24;
    static constexpr std::size_t resourcesPlace = optional + 112 + 16;
    static constexpr std::size_t section = optional + 240;

    FakeImage() : Bytes(size)
    {
        PutText(0, "MZ");
        Put<std::uint32_t>(0x3C, header);
        PutText(header, "PE");
        Put<std::uint16_t>(header + 6, 1);
        Put<std::uint32_t>(header + 8, 1'000'000'000);
        Put<std::uint16_t>(header + 20, 240);
        Put<std::uint16_t>(optional, 0x20B);
        Put<std::uint32_t>(optional + 56, size);
        Put<std::uint32_t>(resourcesPlace, resources);
        PutText(section, ".text");
        Put<std::uint32_t>(section + 12, 0x1800);
    }

    // A directory of resources; places count from the start of the resources on.
    void Directory(std::uint32_t place, std::uint16_t named, std::uint16_t numbered)
    {
        Put(resources + place + 12, named);
        Put(resources + place + 14, numbered);
    }
    void Entry(std::uint32_t directory, unsigned index, std::uint32_t name, std::uint32_t place)
    {
        Put(resources + directory + 16 + index * 8, name);
        Put(resources + directory + 16 + index * 8 + 4, place);
    }
    void Leaf(std::uint32_t place, std::uint32_t address, std::uint32_t length)
    {
        Put(resources + place, address);
        Put(resources + place + 4, length);
    }

    HMODULE Module() const { return reinterpret_cast<HMODULE>(const_cast<std::uint8_t*>(Data())); }
};

} // namespace qxtest
