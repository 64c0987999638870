#include "files/file.h"

#include "support/fake_stream.h"
#include "support/temp_folder.h"

#include <gtest/gtest.h>

#include <string>

using namespace qx;
using qxtest::BytesOf;
using qxtest::FakeStream;
using qxtest::TempFolder;

namespace
{

// Fails from some byte on, as a file does that another process cuts meanwhile.
class CutStream : public FakeStream
{
public:
    uint64_t end = 0;
    HRESULT STDMETHODCALLTYPE Read(void* buffer, ULONG count, ULONG* read) override
    {
        const uint64_t left = position < end ? end - position : 0;
        return FakeStream::Read(buffer, static_cast<ULONG>(std::min<uint64_t>(count, left)), read);
    }
};

} // namespace

TEST(FileCopy, CopiesTheRemainderAndEndsThere)
{
    const TempFolder folder;
    const String from = folder.Make(L"from", "0123456789");
    const String to = folder.Make(L"to", std::string(100, '#'));
    {
        clsFile source(from, FileAccess::Read, FileDisposition::OpenExisting, FileShare::Read, kFileData);
        clsFileRW target(to, FileAccess::ReadWrite, FileDisposition::OpenExisting, FileShare::None, kFileData);
        source.Seek(6);
        target.Seek(3);
        EXPECT_TRUE(target.CopyFrom(source));
        EXPECT_EQ(target.Tell(), 7);
    }
    EXPECT_EQ(BytesOf(to), "###6789");
}

TEST(FileCopy, BetweenFilesAndStreams)
{
    const TempFolder folder;
    const std::string bytes = std::string(3000000, 'x') + "end";
    clsFile file(
        folder.Make(L"from", bytes), FileAccess::Read, FileDisposition::OpenExisting, FileShare::Read, kFileData);
    FakeStream stream;
    stream.setSizeMovesPosition = true;
    clsFile held(&stream);
    EXPECT_TRUE(held.CopyFrom(file));
    EXPECT_EQ(stream.bytes, bytes);

    const String to = folder.Path(L"to");
    clsFileRW back(to, FileAccess::Write, FileDisposition::CreateAlways, FileShare::None, kFileData);
    held.Seek(0);
    EXPECT_TRUE(back.CopyFrom(held));
    back.Close();
    EXPECT_EQ(BytesOf(to), bytes);
}

TEST(FileCopy, NothingToCopySetsTheEnd)
{
    const TempFolder folder;
    clsFile empty(
        folder.Make(L"empty", ""), FileAccess::Read, FileDisposition::OpenExisting, FileShare::Read, kFileData);
    clsFile atEnd(
        folder.Make(L"full", "abc"), FileAccess::Read, FileDisposition::OpenExisting, FileShare::Read, kFileData);
    atEnd.Seek(3);
    clsFile behindEnd(
        folder.Make(L"full2", "abc"), FileAccess::Read, FileDisposition::OpenExisting, FileShare::Read, kFileData);
    behindEnd.Seek(30);
    clsFile closed;
    for (clsFile* source : {&empty, &atEnd, &behindEnd, &closed})
    {
        FakeStream stream;
        clsFile target(&stream);
        target.WriteBytes("0123456789");
        target.Seek(4);
        EXPECT_TRUE(target.CopyFrom(*source));
        EXPECT_EQ(stream.bytes, "0123");
        EXPECT_EQ(stream.position, 4U);
    }
}

TEST(FileCopy, FailsWhereReadingOrWritingFails)
{
    CutStream cut;
    cut.bytes = "0123456789";
    cut.end = 5;
    clsFile source(&cut);
    FakeStream stream;
    clsFile target(&stream);
    EXPECT_FALSE(target.CopyFrom(source));

    cut.end = 10;
    source.Seek(0);
    stream.writeLimit = 3;
    EXPECT_FALSE(target.CopyFrom(source));
    clsFile nowhere;
    source.Seek(0);
    EXPECT_FALSE(nowhere.CopyFrom(source));
}
