// The file class over a file or a stream, through its own functions and as COM callers see it.
#include "files/file.h"

#include "support/debug_lines.h"
#include "support/developer_run.h"
#include "support/fake_stream.h"
#include "support/temp_folder.h"
#include "unit/files/opened.h"

#include <gtest/gtest.h>

#include <combaseapi.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <tuple>
#include <utility>

using namespace qx;
using namespace qxtest;

namespace
{

class FileStream : public testing::Test
{
protected:
    template <class File>
    void OpenAs(File& file, FileAccess access = FileAccess::ReadWrite)
    {
        ASSERT_EQ(file.Open(_path, access, FileDisposition::OpenExisting, FileShare::ReadWrite, kFileData), 0);
    }

    TempFolder _folder;
    String _path = _folder.Make(L"file", "0123456789");
};

} // namespace

TEST_F(FileStream, ReadsAndWritesAFile)
{
    {
        Writer file(_path, FileDisposition::CreateAlways);
        EXPECT_EQ(file.WriteBytes("0123456789"), 10);
        EXPECT_EQ(file.WriteBytes("abcdef", 2), 2);
        EXPECT_EQ(file.Write("XY", 2, 4), 2);
        EXPECT_EQ(file.Tell(), 6);
        EXPECT_EQ(file.Write("", 0), 0);
        char buffer[20] = {};
        EXPECT_EQ(file.Read(buffer, 20), 6U);
        EXPECT_STREQ(buffer, "6789ab");
        EXPECT_EQ(file.Read(buffer, 20), 0U);
        EXPECT_EQ(file.Seek(3), 3);
        file.SetEOF();
        EXPECT_EQ(file.Seek(100), 100);
        EXPECT_EQ(file.Seek(-5), 0); // fails
        EXPECT_EQ(file.Tell(), 100);
        EXPECT_EQ(file.Write("nowhere", 7, -5), 0);
        EXPECT_EQ(file.WriteChars(L"\u00E4b", 1), 1);
        EXPECT_EQ(file.WriteChars(L"cd"), 2);
    }
    EXPECT_EQ(BytesOf(_path), "012" + std::string(97, '\0') + std::string("\xE4\0c\0d\0", 6));
}

TEST(File, ReadsAndWritesAStream)
{
    FakeStream stream;
    stream.position = 7;
    clsFile file(&stream);
    EXPECT_EQ(stream.position, 0U);
    EXPECT_EQ(stream.references, 2U);
    EXPECT_EQ(file.WriteBytes("0123456789"), 10);
    EXPECT_EQ(file.Write("XY", 2, 4), 2);
    EXPECT_EQ(file.Tell(), 6);
    file.SetEOF();
    EXPECT_EQ(file.WriteChars(L"a"), 1);
    EXPECT_EQ(stream.bytes, std::string("0123XYa\0", 8));

    // Seek returns the low 32 bits of the new position as a signed number; Tell returns all bits.
    EXPECT_EQ(file.Seek(0x180000000), -0x80000000LL);
    EXPECT_EQ(file.Tell(), 0x180000000);
    stream.seekResult = E_FAIL;
    EXPECT_EQ(file.Seek(1), -1);
    EXPECT_EQ(file.Tell(), -1);
    EXPECT_EQ(file.Write("nowhere", 7, 0x10), 0);

    FakeStream second;
    for (int i = 0; i < 2; ++i)
    {
        EXPECT_EQ(file.AttachStream(&second), 0);
        EXPECT_EQ(stream.references, 1U);
        EXPECT_EQ(second.references, 2U);
    }
    file.Open(L"no such file", FileAccess::Read, FileDisposition::OpenExisting, FileShare::Read, kFileData);
    EXPECT_EQ(second.references, 1U);
    EXPECT_EQ(file.AttachStream(&stream), 0);
    EXPECT_EQ(file.GetErrorKind(), FileError::None);
    EXPECT_TRUE(file.GetName().IsEmpty());
    EXPECT_EQ(file.AttachStream(nullptr), -1);
}

TEST(File, TempStreamTakesTheCallersReference)
{
    IStream* stream = nullptr;
    CreateStreamOnHGlobal(nullptr, TRUE, &stream);
    stream->AddRef();
    EXPECT_EQ(clsFileRWTempStream(stream).WriteBytes("abc"), 3);
    EXPECT_EQ(stream->Release(), 0U);
}

TEST(File, ClosedObjectsFail)
{
    clsFileRW file;
    char buffer[2];
    EXPECT_EQ(file.GetSize(), -1);
    EXPECT_EQ(file.clsFile::Seek(0), -1);
    EXPECT_EQ(file.Tell(), -1);
    EXPECT_EQ(file.clsFile::Read(buffer, 2), 0U);
    EXPECT_EQ(file.WriteBytes("ab"), -1);
    EXPECT_EQ(file.GetUTFType(), UTFType::Unknown);
    EXPECT_FALSE(file.Lock(0, 1));
    file.SetEOF();
    file.Reserve(10);
    file.Close();

    IStream* const stream = &file;
    ULONG count = 9;
    EXPECT_EQ(stream->Read(buffer, 2, &count), E_HANDLE);
    EXPECT_EQ(count, 0U);
    for (const HRESULT result : {stream->Write(buffer, 2, &count), stream->SetSize({.QuadPart = 0}),
             stream->Seek({.QuadPart = 0}, STREAM_SEEK_SET, nullptr)})
        EXPECT_EQ(result, E_HANDLE);
    EXPECT_EQ(stream->Commit(0), E_FAIL);
    EXPECT_EQ(stream->LockRegion({.QuadPart = 0}, {.QuadPart = 1}, LOCK_EXCLUSIVE), E_NOTIMPL);
    STATSTG record = {};
    EXPECT_EQ(stream->Stat(&record, STATFLAG_NONAME), 2);
}

TEST_F(FileStream, FailedWritesAreLoggedAndDontCount)
{
    const auto message = [](const wchar_t* name, int written, int count, unsigned error)
    {
        return String(String::kFormatted, L"clsFile(%s)::Write(): write failure... %d/%d (%s)", name, written, count,
            String::SystemErrorText(error).Text());
    };
    const DebugLines lines;
    FakeStream stream;
    stream.writeLimit = 3;
    clsFile held(&stream);
    EXPECT_EQ(held.WriteBytes("abcdef"), 0);
    EXPECT_EQ(lines.Only(), message(L"(Stream)", 3, 6, 0));
    stream.writeResult = STG_E_MEDIUMFULL;
    EXPECT_EQ(held.WriteChars(L"ab"), 0);
    EXPECT_EQ(lines.Last(), message(L"(Stream)", 3, 4, static_cast<unsigned>(STG_E_MEDIUMFULL)));

    Reader file(_path);
    EXPECT_EQ(file.WriteBytes("xyz"), 0);
    EXPECT_EQ(lines.Last(), message(_path, 0, 3, ERROR_ACCESS_DENIED));
    file.SetEOF();
    EXPECT_STREQ(lines.Last().Text(), L"ERR: SetEOF() failed!");
    EXPECT_EQ(BytesOf(_path), "0123456789");
}

TEST_F(FileStream, ReserveMakesRoomAndStays)
{
    Writer file(_path);
    file.Seek(4);
    for (const int room : {100, 2})
    {
        file.Reserve(room);
        EXPECT_EQ(file.Tell(), 4);
        EXPECT_EQ(file.GetSize(), 4 + room);
    }
    file.Close();
    EXPECT_EQ(BytesOf(_path), "012345");

    FakeStream stream;
    clsFile held(&stream);
    held.WriteBytes("0123456789");
    held.Seek(4);
    const DebugLines lines;
    held.Reserve(3);
    EXPECT_EQ(stream.sizeSet, 7);
    EXPECT_EQ(stream.position, 4U);
    EXPECT_EQ(lines.Count(), 0U);
    stream.setSizeMovesPosition = true;
    held.Reserve(6);
    EXPECT_EQ(stream.bytes.size(), 10U);
    EXPECT_EQ(stream.position, 4U);
    EXPECT_STREQ(lines.Only().Text(),
        L"WRN: need to correct Outlook stream implementation error, cross your fingers to proceed");
    stream.setSizeResult = STG_E_MEDIUMFULL;
    held.Reserve(20);
    EXPECT_STREQ(lines.Last().Text(), L"ERR: Stream->SetSize(4+20) failed!");
    held.SetEOF();
    EXPECT_STREQ(lines.Last().Text(), L"ERR: Stream->SetEOF(4) failed!");
}

// Positions above 4 GB. The file is sparse, so it occupies little space.
TEST_F(FileStream, PositionsFrom4GB)
{
    constexpr std::int64_t kFar = 0x100000000 + 10;
    Writer file(_folder.Path(L"large"), FileDisposition::CreateAlways, kFileData | kFileDeleteOnClose);
    EXPECT_EQ(file.Seek(0xFFFFFFFF), 0xFFFFFFFF);
    EXPECT_EQ(file.Tell(), 0xFFFFFFFF);
    EXPECT_EQ(file.Seek(kFar), kFar);
    EXPECT_EQ(file.Tell(), -1);
    file.Reserve(5);
    EXPECT_EQ(file.GetSize(), kFar + 5);
    EXPECT_EQ(file.SetSize({.QuadPart = kFar + 20}), S_OK);
    EXPECT_EQ(file.WriteBytes("here"), 4);
    char buffer[5] = {};
    file.Seek(kFar);
    EXPECT_EQ(file.Read(buffer, 4), 4U);
    EXPECT_STREQ(buffer, "here");
}

TEST_F(FileStream, CopiesTheRemainderAndEndsThere)
{
    const std::string bytes = std::string(3000000, 'x') + "end";
    Reader file(_folder.Make(L"from", "+++" + bytes));
    file.Seek(3);
    FakeStream stream;
    stream.setSizeMovesPosition = true;
    clsFile held(&stream);
    EXPECT_TRUE(held.CopyFrom(file));
    EXPECT_EQ(stream.bytes, bytes);

    const String to = _folder.Make(L"to", std::string(4000000, '#'));
    Writer back(to);
    held.Seek(0);
    back.Seek(2);
    EXPECT_TRUE(back.CopyFrom(held));
    EXPECT_EQ(back.Tell(), 3000005);
    back.Close();
    EXPECT_EQ(BytesOf(to), "##" + bytes);

    // The end of the file is set even if there is nothing to copy.
    clsFile closed;
    file.Seek(4000000);
    for (clsFile* source : {static_cast<clsFile*>(&file), &closed})
    {
        held.Seek(4);
        EXPECT_TRUE(held.CopyFrom(*source));
        EXPECT_EQ(stream.bytes, "xxxx");
        EXPECT_EQ(stream.position, 4U);
    }
}

TEST(FileCopy, FailsWhereReadingOrWritingFails)
{
    FakeStream from, stream;
    from.bytes = "0123456789";
    from.readLimit = 0; // as if another process had truncated the file
    clsFile source(&from), target(&stream), nowhere;
    EXPECT_FALSE(target.CopyFrom(source));
    from.readLimit = 10;
    stream.writeLimit = 3;
    for (clsFile* to : {&target, &nowhere})
    {
        source.Seek(0);
        EXPECT_FALSE(to->CopyFrom(source));
    }
}

TEST_F(FileStream, ReadAndSeek)
{
    clsFileRO file;
    OpenAs(file, FileAccess::Read);
    IStream* const stream = &file;
    char buffer[20] = {};
    ULONG read = 99;
    EXPECT_EQ(stream->Read(buffer, 4, &read), S_OK);
    EXPECT_EQ(read, 4U);
    EXPECT_EQ(stream->Read(buffer, 20, &read), S_FALSE);
    EXPECT_EQ(read, 6U);
    ULARGE_INTEGER position = {};
    for (const auto& [distance, origin, expected] :
        {std::tuple(3, STREAM_SEEK_SET, 3u), {4, STREAM_SEEK_CUR, 7u}, {-5, STREAM_SEEK_CUR, 2u},
            {-1, STREAM_SEEK_END, 9u}, {5, STREAM_SEEK_END, 15u}, {-99, STREAM_SEEK_CUR, 15u}})
    {
        EXPECT_EQ(stream->Seek({.QuadPart = distance}, static_cast<DWORD>(origin), &position), S_OK);
        EXPECT_EQ(position.QuadPart, expected) << distance;
    }
    EXPECT_EQ(stream->Seek({.QuadPart = 0}, 3, &position), E_INVALIDARG);
    EXPECT_EQ(stream->Seek({.QuadPart = 1}, STREAM_SEEK_SET, nullptr), S_OK);
    EXPECT_EQ(file.Tell(), 1);
}

TEST_F(FileStream, OnlyARWWrites)
{
    clsFileRO readOnly;
    clsFileRW noWriting, file;
    OpenAs(readOnly); // the handle permits writing, but the object's type decides
    OpenAs(noWriting, FileAccess::Read);
    OpenAs(file);
    ULONG written = 99;
    for (const auto& [stream, result, count] : {std::tuple<IStream*, HRESULT, ULONG>{&readOnly, E_ACCESSDENIED, 0},
             {&noWriting, S_FALSE, 0}, {&file, S_OK, 2}})
    {
        EXPECT_EQ(stream->Write("ab", 2, &written), result);
        EXPECT_EQ(written, count);
    }
    EXPECT_EQ(readOnly.SetSize({.QuadPart = 2}), E_ACCESSDENIED);
    EXPECT_EQ(file.Commit(0), S_OK);
    EXPECT_EQ(BytesOf(_path), "ab23456789");
}

TEST_F(FileStream, SetSizeKeepsThePositionOrGoesToTheStart)
{
    clsFileRW file;
    OpenAs(file);
    file.Seek(4);
    for (const auto& [size, position] : {std::pair(20, 4), {5, 4}, {4, 0}})
    {
        EXPECT_EQ(file.SetSize({.QuadPart = static_cast<std::uint64_t>(size)}), S_OK);
        EXPECT_EQ(file.GetSize(), size);
        EXPECT_EQ(file.Tell(), position);
    }
    // A size that no file can have doesn't truncate the file.
    EXPECT_EQ(file.SetSize({.QuadPart = ~std::uint64_t{0}}), E_INVALIDARG);
    EXPECT_EQ(file.GetSize(), 4);
}

TEST_F(FileStream, LockRegionsExcludeOtherHandles)
{
    clsFileRW file, other;
    OpenAs(file);
    OpenAs(other);
    EXPECT_EQ(file.LockRegion({.QuadPart = 2}, {.QuadPart = 3}, LOCK_EXCLUSIVE), S_OK);
    EXPECT_EQ(other.LockRegion({.QuadPart = 4}, {.QuadPart = 1}, LOCK_EXCLUSIVE), E_NOTIMPL);
    EXPECT_EQ(file.UnlockRegion({.QuadPart = 2}, {.QuadPart = 3}, LOCK_EXCLUSIVE), S_OK);
    EXPECT_EQ(file.UnlockRegion({.QuadPart = 2}, {.QuadPart = 3}, LOCK_EXCLUSIVE), E_NOTIMPL);
}

TEST_F(FileStream, Stat)
{
    WIN32_FILE_ATTRIBUTE_DATA attributes = {};
    ASSERT_TRUE(GetFileAttributesExW(_path.Text(), GetFileExInfoStandard, &attributes));
    clsFileRO file;
    OpenAs(file, FileAccess::Read);
    IStream* const stream = &file;
    EXPECT_EQ(stream->Stat(nullptr, STATFLAG_NONAME), E_INVALIDARG);

    STATSTG record = {};
    ASSERT_EQ(stream->Stat(&record, STATFLAG_DEFAULT), S_OK);
    EXPECT_STREQ(record.pwcsName, _path.Text());
    CoTaskMemFree(record.pwcsName);
    EXPECT_EQ(record.type, DWORD{STGTY_STREAM});
    EXPECT_EQ(record.cbSize.QuadPart, 10U);
    EXPECT_EQ(std::memcmp(&record.mtime, &attributes.ftLastWriteTime, sizeof(FILETIME)), 0);
    EXPECT_EQ(std::memcmp(&record.ctime, &attributes.ftCreationTime, sizeof(FILETIME)), 0);

    EXPECT_EQ(stream->Stat(&record, STATFLAG_NONAME), S_OK);
    EXPECT_EQ(record.pwcsName, nullptr);
}

TEST_F(FileStream, HeldStreamDoesTheWorkWhateverTheType)
{
    FakeStream fake;
    clsFileRO file(&fake);
    clsFileRW writer(&fake);
    IStream* const stream = &file;
    ULONG count = 0;
    EXPECT_EQ(stream->Write("abcdef", 6, &count), S_OK);
    EXPECT_EQ(count, 6U);
    EXPECT_EQ(stream->SetSize({.QuadPart = 3}), S_OK);
    EXPECT_EQ(fake.bytes, "abc");
    EXPECT_EQ(stream->Revert(), STG_E_REVERTED);
    EXPECT_EQ(stream->Clone(nullptr), STG_E_UNIMPLEMENTEDFUNCTION);
    STATSTG record = {};
    EXPECT_EQ(stream->Stat(&record, STATFLAG_NONAME), S_OK);
    EXPECT_EQ(record.cbSize.QuadPart, 3U);
    // Commit isn't forwarded if the type doesn't permit writing.
    EXPECT_EQ(stream->Commit(0), S_OK);
    EXPECT_EQ(fake.commits, 0);
    EXPECT_EQ(writer.Commit(0), S_OK);
    EXPECT_EQ(fake.commits, 1);
    fake.commitResult = STG_E_MEDIUMFULL;
    EXPECT_EQ(writer.Commit(0), E_FAIL);
}

TEST_F(FileStream, Interfaces)
{
    auto* const file = new clsFileRW;
    IStream* stream = nullptr;
    ASSERT_EQ(file->NonDelegatingQueryInterface(IID_IStream, reinterpret_cast<void**>(&stream)), S_OK);
    EXPECT_EQ(stream, static_cast<IStream*>(file));

    IUnknown *unknown = nullptr, *again = nullptr, *marshal = nullptr;
    ASSERT_EQ(stream->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&unknown)), S_OK);
    ASSERT_EQ(stream->QueryInterface(IID_IMarshal, reinterpret_cast<void**>(&marshal)), S_OK);
    // The marshaler is part of the object: it returns the same identity.
    ASSERT_EQ(marshal->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&again)), S_OK);
    EXPECT_EQ(again, unknown);
    void* nothing = &nothing;
    EXPECT_EQ(stream->QueryInterface(IID_IStorage, &nothing), E_NOINTERFACE);
    EXPECT_EQ(nothing, nullptr);
    again->Release();
    marshal->Release();
    EXPECT_EQ(unknown->Release(), 1U);
    const std::int32_t living = clsFile::LivingObjects();
    EXPECT_EQ(stream->Release(), 0U);
    EXPECT_EQ(clsFile::LivingObjects(), living - 1);
}

TEST_F(FileStream, OperationsAreTracedInDevelopersRuns)
{
    const DebugLines lines;
    clsFileRO file;
    OpenAs(file, FileAccess::Read);
    FakeStream fake;
    clsFileRW held(&fake);
    char buffer[20];
    const auto operate = [&]
    {
        static_cast<IStream&>(file).Read(buffer, 20, nullptr);
        file.Seek({.QuadPart = -1}, STREAM_SEEK_END, nullptr);
        file.SetSize({.QuadPart = 5});
        held.CopyTo(&fake, {.QuadPart = 8}, nullptr, nullptr);
        held.Commit(2);
        file.Revert();
        held.LockRegion({.QuadPart = 1}, {.QuadPart = 2}, LOCK_EXCLUSIVE);
        held.UnlockRegion({.QuadPart = 1}, {.QuadPart = 2}, LOCK_EXCLUSIVE);
        static_cast<IStream&>(held).Write("ab", 2, nullptr);
    };
    operate();
    EXPECT_EQ(lines.Count(), 0U);
    {
        const qxtest::UserIs developer(L"QVX");
        operate();
    }

    const String denied = String(L"<") + String::SystemErrorText(0x80070005);
    const String notImplemented = String(L"<") + String::SystemErrorText(0x80004001);
    const String copyTo(String::kFormatted, L">clsFile::Stream::CopyTo(%#p,8)", static_cast<IStream*>(&fake));
    const String expected[] = {L">clsFile::Stream::Read(20)", L"<S_FALSE (read 1 bytes)",
        L">clsFile::Stream::Seek(-1,2)", L"<S_OK", L">clsFile::Stream::SetSize(5)", denied, copyTo, L"<S_OK (r=8, w=4)",
        L">clsFile::Stream::Commit(2)", L"<S_OK", L">clsFile::Stream::Revert()", notImplemented,
        L">clsFile::Stream::LockRegion(1,2)", L"<S_OK", L">clsFile::Stream::UnlockRegion(1,2)", L"<S_OK",
        L">clsFile::Stream::Write(2)", L"<S_OK"};
    const auto entries = lines.Entries();
    ASSERT_EQ(entries.size(), std::size(expected));
    for (std::size_t i = 0; i < entries.size(); ++i)
        EXPECT_EQ(std::pair(entries[i].text, entries[i].indentChange), std::pair(expected[i], i % 2 == 0 ? 1 : -1));
}
