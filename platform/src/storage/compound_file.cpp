#include "storage/compound_file.h"

#include "base/text.h"
#include "storage/storage_errors.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <utility>

namespace qxplatform
{

namespace
{

constexpr std::uint8_t kSignature[kSignatureSize] = {0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1};
constexpr std::size_t kLinkSize = 4;
constexpr std::size_t kElementSize = 128;

// All numbers are little-endian, as on the processors that the layer supports.
template <class Number>
Number NumberAt(const std::uint8_t* bytes, std::size_t offset)
{
    Number number;
    std::memcpy(&number, bytes + offset, sizeof number);
    return number;
}

// Compares names by the order of siblings: shorter names come first.
int CompareNames(std::u16string_view left, std::u16string_view right)
{
    if (left.size() != right.size())
        return left.size() < right.size() ? -1 : 1;
    for (std::size_t i = 0; i < left.size(); ++i)
    {
        const char16_t a = UpperCase(left[i]);
        const char16_t b = UpperCase(right[i]);
        if (a != b)
            return a < b ? -1 : 1;
    }
    return 0;
}

Element ParseElement(const std::uint8_t* bytes, bool hasLargeSize)
{
    Element element = {};
    std::memcpy(element.name, bytes, sizeof element.name);
    const auto nameSize = NumberAt<std::uint16_t>(bytes, 64); // in bytes, with the terminator
    if (nameSize >= 2 && nameSize <= sizeof element.name)
        element.nameLength = nameSize / 2 - 1;
    element.type = static_cast<ElementType>(bytes[66]);
    element.left = NumberAt<std::uint32_t>(bytes, 68);
    element.right = NumberAt<std::uint32_t>(bytes, 72);
    element.child = NumberAt<std::uint32_t>(bytes, 76);
    element.start = NumberAt<std::uint32_t>(bytes, 116);
    // In version 3 the upper half isn't always initialised.
    element.size = hasLargeSize ? NumberAt<std::uint64_t>(bytes, 120) : NumberAt<std::uint32_t>(bytes, 120);
    return element;
}

} // namespace

bool IsCompoundSignature(const std::uint8_t* bytes)
{
    return std::memcmp(bytes, kSignature, kSignatureSize) == 0;
}

std::shared_ptr<CompoundFile> CompoundFile::Open(const WCHAR* name, DWORD share, HRESULT& failure)
{
    std::shared_ptr<CompoundFile> compound(new CompoundFile);
    failure = compound->OpenFile(name, share);
    return SUCCEEDED(failure) ? compound : nullptr;
}

CompoundFile::~CompoundFile()
{
    if (_file != INVALID_HANDLE_VALUE)
        CloseHandle(_file);
}

HRESULT CompoundFile::OpenFile(const WCHAR* name, DWORD share)
{
    _file = CreateFileW(name, GENERIC_READ, share, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    return _file != INVALID_HANDLE_VALUE ? ReadHeader() : StorageError(GetLastError());
}

HRESULT CompoundFile::ReadHeader()
{
    constexpr std::uint16_t kLittleEndianMark = 0xFFFE;
    constexpr std::uint16_t kMiniShift = 6;
    constexpr std::size_t kTableSectors = 109; // in the header

    LARGE_INTEGER size = {};
    if (!GetFileSizeEx(_file, &size))
        return StorageError(GetLastError());
    _size = static_cast<std::uint64_t>(size.QuadPart);
    std::uint8_t header[kHeaderSize];
    if (ReadAt(0, header, sizeof header) != sizeof header || !IsCompoundSignature(header))
        return TakeFailure(STG_E_FILEALREADYEXISTS); // "is not a storage"

    const auto version = NumberAt<std::uint16_t>(header, 26);
    const auto shift = NumberAt<std::uint16_t>(header, 30);
    _hasLargeSizes = version == 4;
    if (NumberAt<std::uint16_t>(header, 28) != kLittleEndianMark || (version != 3 && version != 4) ||
        shift != (_hasLargeSizes ? 12 : 9) || NumberAt<std::uint16_t>(header, 32) != kMiniShift ||
        NumberAt<std::uint32_t>(header, 56) != kMiniCutoff)
        return STG_E_INVALIDHEADER;

    _sectorSize = std::size_t{1} << shift;
    _table.count = NumberAt<std::uint32_t>(header, 44);
    _directory = SectorChain(NumberAt<std::uint32_t>(header, 48));
    _miniTable.chain = SectorChain(NumberAt<std::uint32_t>(header, 60));
    _table.nextList = NumberAt<std::uint32_t>(header, 68);
    _table.sectors.resize(kTableSectors);
    std::memcpy(_table.sectors.data(), header + 76, kTableSectors * kLinkSize);
    return S_OK;
}

std::optional<std::uint32_t> CompoundFile::Find(std::uint32_t storage, std::u16string_view name, ElementType type)
{
    const std::optional<Element> parent = ElementAt(storage);
    if (!parent)
        return std::nullopt;
    CircleCheck check;
    std::uint32_t index = parent->child;
    while (index <= kGreatestLink && check.Pass(index))
    {
        const std::optional<Element> element = ElementAt(index);
        if (!element)
            break;
        const int order = CompareNames(name, element->Name());
        if (order == 0)
            return element->type == type ? std::optional(index) : std::nullopt;
        index = order < 0 ? element->left : element->right;
    }
    return std::nullopt;
}

std::optional<Element> CompoundFile::ElementAt(std::uint32_t index)
{
    const std::uint64_t offset = std::uint64_t{index} * kElementSize;
    const std::optional<std::uint32_t> sector = _directory.At(offset / _sectorSize, _table);
    if (!sector)
        return std::nullopt;
    const std::uint8_t* const bytes =
        _directoryView.At(*this, *sector, static_cast<std::size_t>(offset % _sectorSize), kElementSize);
    return bytes != nullptr ? std::optional(ParseElement(bytes, _hasLargeSizes)) : std::nullopt;
}

std::size_t CompoundFile::Read(
    SectorChain& chain, bool isMini, std::uint64_t offset, std::uint8_t* buffer, std::size_t count)
{
    const std::size_t unit = isMini ? kMiniSectorSize : _sectorSize;
    LinkTable& table = isMini ? static_cast<LinkTable&>(_miniTable) : _table;
    std::size_t done = 0;
    while (done < count)
    {
        const std::uint64_t index = (offset + done) / unit;
        const auto inSector = static_cast<std::size_t>((offset + done) % unit);
        const std::optional<std::uint32_t> first = chain.At(index, table);
        if (!first)
            break;
        // Sectors that follow each other in the file are read at once.
        std::size_t run = unit - inSector;
        for (std::uint32_t next = 1; run < count - done && chain.At(index + next, table) == *first + next; ++next)
            run += unit;
        const std::size_t wanted = std::min(run, count - done);
        const std::size_t read =
            isMini ? Read(MiniStream(), false, std::uint64_t{*first} * unit + inSector, buffer + done, wanted)
                   : ReadAt(OffsetOf(*first) + inSector, buffer + done, wanted);
        done += read;
        if (read < wanted)
            break;
    }
    return done;
}

HRESULT CompoundFile::TakeFailure(HRESULT damage)
{
    const DWORD error = std::exchange(_error, DWORD{ERROR_SUCCESS});
    return error != ERROR_SUCCESS ? StorageError(error) : damage;
}

std::size_t CompoundFile::ReadAt(std::uint64_t offset, void* buffer, std::size_t count)
{
    if (offset >= _size)
        return 0;
    OVERLAPPED place = {};
    place.Offset = static_cast<DWORD>(offset);
    place.OffsetHigh = static_cast<DWORD>(offset >> 32);
    DWORD read = 0;
    if (!ReadFile(_file, buffer, static_cast<DWORD>(count), &read, &place) && GetLastError() != ERROR_HANDLE_EOF)
        _error = GetLastError();
    return read;
}

SectorChain& CompoundFile::MiniStream()
{
    if (!_miniStream)
    {
        const std::optional<Element> root = ElementAt(kRoot);
        _miniStream.emplace(root ? root->start : kNoLink);
    }
    return *_miniStream;
}

const std::uint8_t* CompoundFile::TableView::At(
    CompoundFile& file, std::uint32_t sector, std::size_t offset, std::size_t count)
{
    if (sector != _sector)
    {
        if (!_bytes)
            _bytes = std::make_unique_for_overwrite<std::uint8_t[]>(file._sectorSize);
        _count = file.ReadAt(file.OffsetOf(sector), _bytes.get(), file._sectorSize);
        _sector = sector;
    }
    return offset + count <= _count ? _bytes.get() + offset : nullptr;
}

std::uint32_t CompoundFile::SectorTable::Next(std::uint32_t sector)
{
    const auto linksInSector = static_cast<std::uint32_t>(_file._sectorSize / kLinkSize);
    const std::optional<std::uint32_t> tableSector = TableSector(sector / linksInSector);
    if (!tableSector)
        return kNoLink;
    const std::uint8_t* const bytes = _view.At(_file, *tableSector, sector % linksInSector * kLinkSize, kLinkSize);
    return bytes != nullptr ? NumberAt<std::uint32_t>(bytes, 0) : kNoLink;
}

std::optional<std::uint32_t> CompoundFile::SectorTable::TableSector(std::uint32_t index)
{
    if (index >= count)
        return std::nullopt;
    while (sectors.size() <= index)
        if (!ReadList())
            return std::nullopt;
    return sectors[index] <= kGreatestLink ? std::optional(sectors[index]) : std::nullopt;
}

// Appends the next list of the table's own sectors. The last link of a list leads to the next list.
bool CompoundFile::SectorTable::ReadList()
{
    if (nextList > kGreatestLink || !_check.Pass(nextList))
        return false;
    std::vector<std::uint32_t> list(_file._sectorSize / kLinkSize);
    if (_file.ReadAt(_file.OffsetOf(nextList), list.data(), _file._sectorSize) != _file._sectorSize)
        return false;
    nextList = list.back();
    sectors.insert(sectors.end(), list.begin(), std::prev(list.end()));
    return true;
}

std::uint32_t CompoundFile::MiniTable::Next(std::uint32_t sector)
{
    const std::uint64_t offset = std::uint64_t{sector} * kLinkSize;
    const std::optional<std::uint32_t> tableSector = chain.At(offset / _file._sectorSize, _file._table);
    if (!tableSector)
        return kNoLink;
    const std::uint8_t* const bytes =
        _view.At(_file, *tableSector, static_cast<std::size_t>(offset % _file._sectorSize), kLinkSize);
    return bytes != nullptr ? NumberAt<std::uint32_t>(bytes, 0) : kNoLink;
}

} // namespace qxplatform
