// A file object as COM consumers see it.
#include "files/file.h"

#include "support/debug_lines.h"
#include "support/developer_run.h"
#include "support/fake_stream.h"
#include "support/temp_folder.h"

#include <gtest/gtest.h>

#include <combaseapi.h>

#include <string>
#include <utility>

using namespace qx;
using qxtest::BytesOf;
using qxtest::DebugLines;
using qxtest::FakeStream;
using qxtest::TempFolder;

namespace
{

LARGE_INTEGER Distance(int64_t value)
{
    LARGE_INTEGER distance = {};
    distance.QuadPart = value;
    return distance;
}

ULARGE_INTEGER Large(uint64_t value)
{
    ULARGE_INTEGER large = {};
    large.QuadPart = value;
    return large;
}

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
    const struct
    {
        int64_t distance;
        DWORD origin;
        uint64_t position;
    } cases[] = {{3, STREAM_SEEK_SET, 3}, {4, STREAM_SEEK_CUR, 7}, {-5, STREAM_SEEK_CUR, 2}, {-1, STREAM_SEEK_END, 9},
        {5, STREAM_SEEK_END, 15}, {-99, STREAM_SEEK_CUR, 15}};
    for (const auto& c : cases)
    {
        EXPECT_EQ(stream->Seek(Distance(c.distance), c.origin, &position), S_OK);
        EXPECT_EQ(position.QuadPart, c.position) << c.distance;
    }
    EXPECT_EQ(stream->Seek(Distance(0), 3, &position), E_INVALIDARG);
    EXPECT_EQ(stream->Seek(Distance(1), STREAM_SEEK_SET, nullptr), S_OK);
    EXPECT_EQ(file.Tell(), 1);
}

TEST_F(FileStream, OnlyARWWrites)
{
    {
        clsFileRO readOnly;
        OpenAs(readOnly); // with write access: the type decides
        ULONG written = 99;
        IStream* const stream = &readOnly;
        EXPECT_EQ(stream->Write("ab", 2, &written), E_ACCESSDENIED);
        EXPECT_EQ(written, 0U);
        EXPECT_EQ(stream->SetSize(Large(2)), E_ACCESSDENIED);
    }
    EXPECT_EQ(BytesOf(_path), "0123456789");
    clsFileRW file;
    OpenAs(file);
    IStream* const stream = &file;
    ULONG written = 0;
    EXPECT_EQ(stream->Write("ab", 2, &written), S_OK);
    EXPECT_EQ(written, 2U);
    EXPECT_EQ(stream->Commit(0), S_OK);
    EXPECT_EQ(BytesOf(_path), "ab23456789");

    clsFileRW noWriting;
    OpenAs(noWriting, FileAccess::Read);
    EXPECT_EQ(static_cast<IStream&>(noWriting).Write("ab", 2, &written), S_FALSE);
    EXPECT_EQ(written, 0U);
}

TEST_F(FileStream, SetSizeKeepsThePositionOrGoesToTheStart)
{
    clsFileRW file;
    OpenAs(file);
    IStream* const stream = &file;
    file.Seek(4);
    for (const auto& [size, position] : {std::pair(20, 4), {5, 4}, {4, 0}})
    {
        EXPECT_EQ(stream->SetSize(Large(static_cast<uint64_t>(size))), S_OK);
        EXPECT_EQ(file.GetSize(), size);
        EXPECT_EQ(file.Tell(), position);
    }
    // A size that no file can have doesn't cut it.
    EXPECT_EQ(stream->SetSize(Large(~uint64_t{0})), E_INVALIDARG);
    EXPECT_EQ(file.GetSize(), 4);
}

TEST_F(FileStream, ClosedOne)
{
    clsFileRW file;
    IStream* const stream = &file;
    char buffer[2];
    ULONG count = 9;
    EXPECT_EQ(stream->Read(buffer, 2, &count), E_HANDLE);
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(stream->Write(buffer, 2, &count), E_HANDLE);
    EXPECT_EQ(stream->Seek(Distance(0), STREAM_SEEK_SET, nullptr), E_HANDLE);
    EXPECT_EQ(stream->SetSize(Large(0)), E_HANDLE);
    EXPECT_EQ(stream->Commit(0), E_FAIL);
    EXPECT_EQ(stream->LockRegion(Large(0), Large(1), LOCK_EXCLUSIVE), E_NOTIMPL);
    STATSTG record = {};
    EXPECT_EQ(stream->Stat(&record, STATFLAG_NONAME), 2);
}

TEST_F(FileStream, LockRegionsExcludeOtherHandles)
{
    clsFileRW file;
    clsFileRW other;
    OpenAs(file);
    OpenAs(other);
    EXPECT_EQ(file.LockRegion(Large(2), Large(3), LOCK_EXCLUSIVE), S_OK);
    EXPECT_EQ(other.LockRegion(Large(4), Large(1), LOCK_EXCLUSIVE), E_NOTIMPL);
    EXPECT_EQ(file.UnlockRegion(Large(2), Large(3), LOCK_EXCLUSIVE), S_OK);
    EXPECT_EQ(file.UnlockRegion(Large(2), Large(3), LOCK_EXCLUSIVE), E_NOTIMPL);
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
    EXPECT_EQ(CompareFileTime(&record.mtime, &attributes.ftLastWriteTime), 0);
    EXPECT_EQ(CompareFileTime(&record.ctime, &attributes.ftCreationTime), 0);

    ASSERT_EQ(stream->Stat(&record, STATFLAG_NONAME), S_OK);
    EXPECT_EQ(record.pwcsName, nullptr);
}

TEST_F(FileStream, HeldStreamDoesTheWorkWhateverTheType)
{
    FakeStream fake;
    clsFileRO file(&fake);
    IStream* const stream = &file;
    char buffer[20] = {};
    ULONG count = 0;
    EXPECT_EQ(stream->Write("abcdef", 6, &count), S_OK);
    EXPECT_EQ(count, 6U);
    EXPECT_EQ(stream->Seek(Distance(-2), STREAM_SEEK_END, nullptr), S_OK);
    EXPECT_EQ(stream->Read(buffer, 20, &count), S_FALSE);
    EXPECT_EQ(count, 2U);
    EXPECT_EQ(stream->SetSize(Large(3)), S_OK);
    EXPECT_EQ(fake.bytes, "abc");
    EXPECT_EQ(stream->Revert(), STG_E_REVERTED);
    EXPECT_EQ(stream->Clone(nullptr), STG_E_UNIMPLEMENTEDFUNCTION);
    STATSTG record = {};
    EXPECT_EQ(stream->Stat(&record, STATFLAG_NONAME), S_OK);
    EXPECT_EQ(record.cbSize.QuadPart, 3U);
    // Committing isn't left to it where the type may not write.
    EXPECT_EQ(stream->Commit(0), S_OK);
    EXPECT_EQ(fake.commits, 0);
    EXPECT_EQ(static_cast<IStream&&>(clsFileRW(&fake)).Commit(0), S_OK);
    EXPECT_EQ(fake.commits, 1);
    fake.commitResult = STG_E_MEDIUMFULL;
    EXPECT_EQ(static_cast<IStream&&>(clsFileRW(&fake)).Commit(0), E_FAIL);
}

TEST_F(FileStream, Interfaces)
{
    auto* const file = new clsFileRW;
    IStream* stream = nullptr;
    ASSERT_EQ(file->NonDelegatingQueryInterface(IID_IStream, reinterpret_cast<void**>(&stream)), S_OK);
    EXPECT_EQ(stream, static_cast<IStream*>(file));

    IUnknown* unknown = nullptr;
    IUnknown* again = nullptr;
    IUnknown* marshal = nullptr;
    ASSERT_EQ(stream->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&unknown)), S_OK);
    ASSERT_EQ(stream->QueryInterface(IID_IMarshal, reinterpret_cast<void**>(&marshal)), S_OK);
    // The marshaler is part of the object: it leads back to the same identity.
    ASSERT_EQ(marshal->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&again)), S_OK);
    EXPECT_EQ(again, unknown);

    void* nothing = &nothing;
    EXPECT_EQ(stream->QueryInterface(IID_IStorage, &nothing), E_NOINTERFACE);
    EXPECT_EQ(nothing, nullptr);
    const int32_t living = clsFile::LivingObjects();
    again->Release();
    marshal->Release();
    EXPECT_EQ(unknown->Release(), 1U);
    EXPECT_EQ(clsFile::LivingObjects(), living);
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
        file.Seek(Distance(-1), STREAM_SEEK_END, nullptr);
        file.SetSize(Large(5));
        held.CopyTo(&fake, Large(8), nullptr, nullptr);
        held.Commit(2);
        file.Revert();
        held.LockRegion(Large(1), Large(2), LOCK_EXCLUSIVE);
        held.UnlockRegion(Large(1), Large(2), LOCK_EXCLUSIVE);
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
    const String copyTo(String::formatted, L">clsFile::Stream::CopyTo(%#p,8)", static_cast<IStream*>(&fake));
    const String expected[] = {L">clsFile::Stream::Read(20)", L"<S_FALSE (read 1 bytes)",
        L">clsFile::Stream::Seek(-1,2)", L"<S_OK", L">clsFile::Stream::SetSize(5)", denied, copyTo, L"<S_OK (r=8, w=4)",
        L">clsFile::Stream::Commit(2)", L"<S_OK", L">clsFile::Stream::Revert()", notImplemented,
        L">clsFile::Stream::LockRegion(1,2)", L"<S_OK", L">clsFile::Stream::UnlockRegion(1,2)", L"<S_OK",
        L">clsFile::Stream::Write(2)", L"<S_OK"};
    const auto entries = lines.Entries();
    ASSERT_EQ(entries.size(), std::size(expected));
    for (size_t i = 0; i < entries.size(); ++i)
    {
        EXPECT_STREQ(entries[i].text.Text(), expected[i].Text());
        EXPECT_EQ(entries[i].indentChange, i % 2 == 0 ? 1 : -1);
    }
}
