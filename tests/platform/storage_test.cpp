// Compound files.
#include "platform/system_support.h"
#include "support/com_pointer.h"
#include "support/compound_builder.h"

#include <objbase.h>

#include <string>
#include <tuple>
#include <utility>

using qxtest::CompoundBuilder;
using qxtest::Text;

namespace
{

constexpr DWORD kExclusive = STGM_SHARE_EXCLUSIVE;

using Storage = qxtest::ComPointer<IStorage>;
using Stream = qxtest::ComPointer<IStream>;

class StorageFile : public testing::Test
{
protected:
    // Doesn't empty the file first, because file systems then flush it to the disk when it is closed.
    void Write(const std::string& bytes) const
    {
        const qxtest::Handle file = qxtest::Open(_path, GENERIC_WRITE, 0, OPEN_ALWAYS);
        EXPECT_TRUE(qxtest::WriteBytes(file, bytes));
        SetEndOfFile(file);
    }

    Storage Open(DWORD mode = STGM_SHARE_DENY_WRITE, HRESULT expected = S_OK) const
    {
        IStorage* storage = nullptr;
        EXPECT_EQ(StgOpenStorage(_path, nullptr, mode, nullptr, 0, &storage), expected) << std::hex << mode;
        return Storage(storage);
    }

    const qxtest::Folder _folder;
    const Text _path = _folder / L"file";
};

Stream OpenStream(const Storage& storage, const char* name, HRESULT expected = S_OK)
{
    IStream* stream = nullptr;
    EXPECT_EQ(storage->OpenStream(Text::Widen(name), nullptr, kExclusive, 0, &stream), expected) << name;
    return Stream(stream);
}

std::size_t SizeOf(const Stream& stream)
{
    STATSTG status = {};
    EXPECT_EQ(stream->Stat(&status, STATFLAG_NONAME), S_OK);
    return static_cast<std::size_t>(status.cbSize.QuadPart);
}

std::string ReadAll(const Stream& stream)
{
    std::string bytes(SizeOf(stream), '\0');
    ULONG read = 0;
    stream->Read(bytes.data(), static_cast<ULONG>(bytes.size()), &read);
    return bytes.substr(0, read);
}

std::string Contents(std::size_t size)
{
    std::string bytes;
    for (std::size_t i = 0; i < size; ++i)
        bytes += static_cast<char>(i * 7 + i / 251);
    return bytes;
}

} // namespace

TEST_F(StorageFile, StreamsOfBothVersions)
{
    // With the gap, the table has more sectors than the header lists.
    for (const auto& [version, gap] : {std::pair(3u, 0u), std::pair(3u, 14'500u), std::pair(4u, 0u)})
    {
        SCOPED_TRACE(version);
        CompoundBuilder builder(version, gap);
        const std::tuple<const char*, const char*, std::size_t> streams[] = {
            {"A", "a", 1}, {"BB", "BB", 4095}, {"bC", "Bc", 4096}, {"DDD", "ddd", 70'000}, {"EEEE", "eeee", 0}};
        for (const auto& [name, otherName, size] : streams)
            builder.AddStream(name, Contents(size));
        builder.AddStorage("Folder").AddStream("inside", "xyz");
        Write(builder.Bytes());
        EXPECT_EQ(StgIsStorageFile(_path), S_OK);
        const Storage storage = Open();
        ASSERT_TRUE(storage);
        for (const auto& [name, otherName, size] : streams)
            EXPECT_EQ(ReadAll(OpenStream(storage, otherName)), Contents(size));
        OpenStream(storage, "Folder", STG_E_FILENOTFOUND);
        OpenStream(storage, "inside", STG_E_FILENOTFOUND);
        IStorage* folder = nullptr;
        EXPECT_EQ(storage->OpenStorage(Text::Widen("FOLDER"), nullptr, kExclusive, nullptr, 0, &folder), S_OK);
        EXPECT_EQ(ReadAll(OpenStream(Storage(folder), "Inside")), "xyz");
    }
}

TEST_F(StorageFile, StreamPositions)
{
    Write(CompoundBuilder().AddStream("Mini", Contents(200)).AddStream("Large", Contents(9'000)).Bytes());
    const Storage storage = Open();
    for (const auto& [name, size] : {std::pair("Mini", std::size_t{200}), {"Large", 9'000}})
    {
        const Stream stream = OpenStream(storage, name);
        EXPECT_EQ(SizeOf(stream), size);
        char bytes[100] = {};
        ULONG read = 0;
        EXPECT_EQ(stream->Seek({.QuadPart = -99}, STREAM_SEEK_END, nullptr), S_OK);
        EXPECT_EQ(stream->Read(bytes, sizeof bytes, &read), S_OK);
        EXPECT_EQ(std::string(bytes, read), Contents(size).substr(size - 99));
        EXPECT_EQ(stream->Read(bytes, sizeof bytes, &read), S_OK);
        EXPECT_EQ(read, 0u);
#ifdef __linux__ // Wine accepts any position
        EXPECT_EQ(
            stream->Seek({.QuadPart = -static_cast<LONGLONG>(size) - 1}, STREAM_SEEK_END, nullptr), STG_E_SEEKERROR);
#endif
    }
}

TEST_F(StorageFile, SharingAndLocks)
{
    Open(STGM_SHARE_DENY_WRITE, STG_E_FILENOTFOUND);
    Write("no storage, but long enough for a header" + std::string(600, ' '));
    EXPECT_EQ(StgIsStorageFile(_path), S_FALSE);
    Open(STGM_SHARE_DENY_WRITE, STG_E_FILEALREADYEXISTS);
    Write(CompoundBuilder().AddStream("A", "x").Bytes());
    {
        const qxtest::Handle writer = qxtest::Open(_path, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE);
        EXPECT_EQ(StgIsStorageFile(_path), S_OK);
        Open(STGM_SHARE_DENY_WRITE, STG_E_SHAREVIOLATION);
        Open(STGM_SHARE_EXCLUSIVE, STG_E_SHAREVIOLATION);
#ifdef __linux__ // other systems may refuse these modes, or honour locks that programs take for storages
        EXPECT_EQ(ReadAll(OpenStream(Open(STGM_SHARE_DENY_NONE), "A")), "x");
        EXPECT_EQ(ReadAll(OpenStream(Open(STGM_DIRECT_SWMR | STGM_SHARE_DENY_NONE), "A")), "x");
        EXPECT_TRUE(LockFile(writer, 0, 0, 8, 0));
        Open(STGM_SHARE_DENY_NONE, STG_E_LOCKVIOLATION);
#endif
    }
    const Storage first = Open(STGM_SHARE_DENY_WRITE);
    Open(STGM_SHARE_DENY_WRITE);
    // Wine locks bytes for the modes of storages.
    Open(STGM_SHARE_EXCLUSIVE, qxtest::kIsLayer ? STG_E_SHAREVIOLATION : STG_E_LOCKVIOLATION);
    IStream* stream = nullptr;
    EXPECT_NE(first->OpenStream(Text::Widen("A"), nullptr, STGM_SHARE_DENY_WRITE, 0, &stream), S_OK);
}

#ifdef __linux__ // Wine's reader doesn't survive damaged files

TEST_F(StorageFile, Circles)
{
    // Sector 0 is the first of "Large"; the table of links is the last sector.
    const std::string whole = CompoundBuilder().AddStream("Large", Contents(5'000)).Bytes();
    const std::size_t table = whole.size() - 512, element = table - 512 + 128;
    std::string bytes = whole;
    CompoundBuilder::Put(bytes, table, 0); // its own successor
    Write(bytes);
    Stream large = OpenStream(Open(), "Large");
    EXPECT_LT(ReadAll(large).size(), 5'000u);
    ULONG read = 0;
    EXPECT_EQ(large->Read(bytes.data(), 10, &read), STG_E_DOCFILECORRUPT);
    large.reset();

    bytes = whole;
    CompoundBuilder::Put(bytes, element + 68, 1); // an element to the left of itself
    CompoundBuilder::Put(bytes, element + 72, 1);
    CompoundBuilder::Put(bytes, element + 120, 0x7FFFFFFF);
    Write(bytes);
    OpenStream(Open(), "A", STG_E_FILENOTFOUND);
    OpenStream(Open(), "Longer name", STG_E_FILENOTFOUND);
    EXPECT_EQ(SizeOf(OpenStream(Open(), "Large")), bytes.size());
}

#endif
