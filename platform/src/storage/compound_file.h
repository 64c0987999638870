// Compound files ([MS-CFB]): a small file system in a file, with sectors, tables of their links, and a directory.
#pragma once

#include "base/mutex.h"
#include "storage/sector_chain.h"

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace qxplatform
{

enum class ElementType : std::uint8_t
{
    Storage = 1,
    Stream = 2,
    Root = 5
};

// A directory entry.
struct Element
{
    char16_t name[32];
    std::size_t nameLength; // without the terminator; 0 if the name is damaged
    ElementType type;
    std::uint32_t left; // the tree of siblings
    std::uint32_t right;
    std::uint32_t child; // the root of the tree of children
    std::uint32_t start; // the first sector
    std::uint64_t size;  // as stored, so it may exceed the file

    std::u16string_view Name() const { return {name, nameLength}; }
};

// The first bytes of each compound file.
constexpr std::size_t kSignatureSize = 8;
bool IsCompoundSignature(const std::uint8_t* bytes);

// A compound file that is open for reading. Opening reads only the header; everything else is read when it is needed. A
// chain, table or tree ends where it refers to a sector outside of the file, to a damaged entry or back to itself.
//
// Callers of all functions except Open must hold Lock().
class CompoundFile
{
public:
    static constexpr std::uint32_t kRoot = 0;
    static constexpr std::uint64_t kMiniCutoff = 4096; // smaller streams are stored in mini sectors

    // `share` is the access that others may have while the file is open, as for CreateFileW. On failure the result is
    // null and `failure` is set. Throws std::bad_alloc.
    static std::shared_ptr<CompoundFile> Open(const WCHAR* name, DWORD share, HRESULT& failure);
    ~CompoundFile();
    CompoundFile(const CompoundFile&) = delete;
    CompoundFile& operator=(const CompoundFile&) = delete;

    Mutex& Lock() { return _mutex; }

    // Finds a child of a storage, without regard to case.
    std::optional<std::uint32_t> Find(std::uint32_t storage, std::u16string_view name, ElementType type);
    std::optional<Element> ElementAt(std::uint32_t index);

    // Returns the size of a stream, which is never greater than the file.
    std::uint64_t SizeOf(const Element& stream) const { return stream.size < _size ? stream.size : _size; }
    // Reads from the stream that the chain belongs to. Returns fewer bytes if the chain ends early.
    std::size_t Read(SectorChain& chain, bool isMini, std::uint64_t offset, std::uint8_t* buffer, std::size_t count);

    // Returns the result for a failed operation: the last error in reading the file, if there was one since the last
    // call, otherwise `damage`.
    HRESULT TakeFailure(HRESULT damage);

private:
    static constexpr std::size_t kHeaderSize = 512;
    static constexpr std::size_t kMiniSectorSize = 64;

    // A cache for the sector of a table that was used last.
    class TableView
    {
    public:
        // Returns bytes of a sector, or null if they aren't in the file.
        const std::uint8_t* At(CompoundFile& file, std::uint32_t sector, std::size_t offset, std::size_t count);

    private:
        std::unique_ptr<std::uint8_t[]> _bytes;
        std::uint32_t _sector = kNoLink;
        std::size_t _count = 0;
    };

    // The links of sectors.
    class SectorTable final : public LinkTable
    {
    public:
        explicit SectorTable(CompoundFile& file) : _file(file) {}
        std::uint32_t Next(std::uint32_t sector) override;

        std::uint32_t count = 0;            // of the table's own sectors
        std::vector<std::uint32_t> sectors; // the table's sectors known so far; nextList leads to the rest
        std::uint32_t nextList = kNoLink;   // a sector with the numbers of more sectors

    private:
        std::optional<std::uint32_t> TableSector(std::uint32_t index);
        bool ReadList();

        CompoundFile& _file;
        TableView _view;
        CircleCheck _check;
    };

    // The links of mini sectors. This table is stored as a stream.
    class MiniTable final : public LinkTable
    {
    public:
        explicit MiniTable(CompoundFile& file) : _file(file) {}
        std::uint32_t Next(std::uint32_t sector) override;

        SectorChain chain{kNoLink};

    private:
        CompoundFile& _file;
        TableView _view;
    };

    CompoundFile() = default;

    HRESULT OpenFile(const WCHAR* name, DWORD share);
    HRESULT ReadHeader();
    std::size_t ReadAt(std::uint64_t offset, void* buffer, std::size_t count);
    std::uint64_t OffsetOf(std::uint32_t sector) const { return (std::uint64_t{sector} + 1) * _sectorSize; }
    SectorChain& MiniStream();

    HANDLE _file = INVALID_HANDLE_VALUE;
    Mutex _mutex;
    std::uint64_t _size = 0;
    std::size_t _sectorSize = 0;
    bool _hasLargeSizes = false; // sizes of streams have 64 bits
    DWORD _error = ERROR_SUCCESS;

    SectorTable _table{*this};
    MiniTable _miniTable{*this};
    SectorChain _directory{kNoLink};
    TableView _directoryView;
    std::optional<SectorChain> _miniStream; // contains the mini sectors
};

} // namespace qxplatform
