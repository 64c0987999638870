#include "files/file.h"

#include "support/debug_lines.h"
#include "support/fake_stream.h"
#include "support/temp_folder.h"
#include "unit/files/opened.h"

#include <gtest/gtest.h>

#include <objbase.h>

#include <string>

using namespace qx;
using qxtest::BytesOf;
using qxtest::DebugLines;
using qxtest::FakeStream;
using qxtest::Reader;
using qxtest::TempFolder;
using qxtest::Writer;

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

TEST(File, ReadsAndWritesAFile)
{
    const TempFolder folder;
    const String path = folder.Path(L"file");
    {
        Writer file(path, FileDisposition::CreateAlways);
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
        EXPECT_EQ(file.GetSize(), 3);
        EXPECT_EQ(file.Seek(100), 100);
        EXPECT_EQ(file.Seek(-5), 0); // fails
        EXPECT_EQ(file.Tell(), 100);
        EXPECT_EQ(file.Write("nowhere", 7, -5), 0);
        EXPECT_EQ(file.WriteChars(L"\u00E4b", 1), 1);
        EXPECT_EQ(file.WriteChars(L"cd"), 2);
    }
    EXPECT_EQ(BytesOf(path), "012" + std::string(97, '\0') + std::string("\xE4\0c\0d\0", 6));
}

TEST(File, ReadsAndWritesAStream)
{
    FakeStream stream;
    stream.position = 7;
    clsFile file(&stream);
    ASSERT_TRUE(file.IsOpen());
    EXPECT_EQ(stream.position, 0U);
    EXPECT_EQ(stream.references, 2U);
    EXPECT_EQ(file.WriteBytes("0123456789"), 10);
    EXPECT_EQ(file.Write("XY", 2, 4), 2);
    EXPECT_EQ(file.Tell(), 6);
    EXPECT_EQ(file.GetSize(), 10);
    char buffer[20] = {};
    EXPECT_EQ(file.Read(buffer, 20), 4U);
    EXPECT_STREQ(buffer, "6789");
    file.Seek(3);
    file.SetEOF();
    EXPECT_EQ(stream.bytes, "012");
    EXPECT_EQ(file.WriteChars(L"a"), 1);
    EXPECT_EQ(stream.bytes, std::string("012a\0", 5));

    // Of a new position the low 32 bits come back, with sign; Tell has them all.
    EXPECT_EQ(file.Seek(0x180000000), -0x80000000LL);
    EXPECT_EQ(file.Tell(), 0x180000000);
    stream.seekResult = E_FAIL;
    EXPECT_EQ(file.Seek(1), -1);
    EXPECT_EQ(file.Tell(), -1);
    EXPECT_EQ(file.Write("nowhere", 7, 0x10), 0);

    file.Close();
    EXPECT_EQ(stream.references, 1U);
    EXPECT_FALSE(file.IsOpen());
}

TEST(File, ClosedObjectAnswersMinusOne)
{
    clsFile file;
    char buffer[2];
    EXPECT_EQ(file.GetSize(), -1);
    EXPECT_EQ(file.Seek(0), -1);
    EXPECT_EQ(file.Tell(), -1);
    EXPECT_EQ(file.Read(buffer, 2), 0U);
    EXPECT_EQ(file.WriteBytes("ab"), -1);
    EXPECT_EQ(file.GetUTFType(), UTFType::Unknown);
    EXPECT_FALSE(file.Lock(0, 1));
    file.SetEOF();
    file.Reserve(10);
    file.Close();
    EXPECT_EQ(file.AttachStream(nullptr), -1);
}

TEST(File, AttachedStreamIsHeldAndOldOneGoes)
{
    FakeStream first;
    FakeStream second;
    clsFile file(&first);
    EXPECT_EQ(file.AttachStream(&second), 0);
    EXPECT_EQ(first.references, 1U);
    EXPECT_EQ(second.references, 2U);
    EXPECT_EQ(file.AttachStream(&second), 0);
    EXPECT_EQ(second.references, 2U);

    const TempFolder folder;
    file.Open(folder.Path(L"none"), FileAccess::Read, FileDisposition::OpenExisting, FileShare::Read, kFileData);
    EXPECT_EQ(second.references, 1U);
    EXPECT_EQ(file.AttachStream(&first), 0);
    EXPECT_EQ(file.GetErrorKind(), FileError::None);
    EXPECT_TRUE(file.GetName().IsEmpty());
}

TEST(File, TempStreamTakesTheCallersReference)
{
    IStream* stream = nullptr;
    CreateStreamOnHGlobal(nullptr, TRUE, &stream);
    stream->AddRef();
    EXPECT_EQ(clsFileRWTempStream(stream).WriteBytes("abc"), 3);
    EXPECT_EQ(stream->Release(), 0U);
}

TEST(File, ShortWritesAreLoggedAndDontCount)
{
    FakeStream stream;
    stream.writeLimit = 3;
    clsFile file(&stream);
    const DebugLines lines;
    EXPECT_EQ(file.WriteBytes("abcdef"), 0);
    const String shortWrite(
        String::formatted, L"clsFile((Stream))::Write(): write failure... 3/6 (%s)", String::SystemErrorText(0).Text());
    EXPECT_STREQ(lines.Only().Text(), shortWrite.Text());

    stream.writeResult = STG_E_MEDIUMFULL;
    EXPECT_EQ(file.WriteChars(L"ab"), 0);
    const String full(String::formatted, L"clsFile((Stream))::Write(): write failure... 3/4 (%s)",
        String::SystemErrorText(static_cast<unsigned>(STG_E_MEDIUMFULL)).Text());
    EXPECT_STREQ(lines.Last().Text(), full.Text());
}

TEST(File, FailedWritesToAFileAreLogged)
{
    const TempFolder folder;
    const String path = folder.Make(L"file", "abc");
    Reader file(path);
    const DebugLines lines;
    EXPECT_EQ(file.WriteBytes("xyz"), 0);
    const String expected(String::formatted, L"clsFile(%s)::Write(): write failure... 0/3 (%s)", path.Text(),
        String::SystemErrorText(ERROR_ACCESS_DENIED).Text());
    EXPECT_STREQ(lines.Only().Text(), expected.Text());
    file.SetEOF();
    EXPECT_STREQ(lines.Last().Text(), L"ERR: SetEOF() failed!");
    EXPECT_EQ(BytesOf(path), "abc");
}

TEST(File, ReserveMakesRoomAndStays)
{
    const TempFolder folder;
    const String path = folder.Make(L"file", "0123456789");
    {
        Writer file(path);
        file.Seek(4);
        file.Reserve(100);
        EXPECT_EQ(file.Tell(), 4);
        EXPECT_EQ(file.GetSize(), 104);
        file.Reserve(2);
        EXPECT_EQ(file.GetSize(), 6);
        EXPECT_EQ(file.Tell(), 4);
    }
    EXPECT_EQ(BytesOf(path), "012345");
}

TEST(File, ReserveOnStreams)
{
    FakeStream stream;
    clsFile file(&stream);
    file.WriteBytes("0123456789");
    file.Seek(4);
    const DebugLines lines;
    file.Reserve(3);
    EXPECT_EQ(stream.sizeSet, 7);
    EXPECT_EQ(stream.position, 4U);
    EXPECT_EQ(lines.Count(), 0U);

    stream.setSizeMovesPosition = true;
    file.Reserve(6);
    EXPECT_EQ(stream.bytes.size(), 10U);
    EXPECT_EQ(stream.position, 4U);
    EXPECT_STREQ(lines.Only().Text(),
        L"WRN: need to correct Outlook stream implementation error, cross your fingers to proceed");

    stream.setSizeResult = STG_E_MEDIUMFULL;
    file.Reserve(20);
    EXPECT_STREQ(lines.Last().Text(), L"ERR: Stream->SetSize(4+20) failed!");
    file.SetEOF();
    EXPECT_STREQ(lines.Last().Text(), L"ERR: Stream->SetEOF(4) failed!");
}

// Beyond what Tell can tell: the file is sparse, so nothing of that size is stored.
TEST(File, PositionsFrom4GB)
{
    constexpr int64_t kFar = 0x100000000 + 10;
    const TempFolder folder;
    Writer file(folder.Path(L"large"), FileDisposition::CreateAlways, kFileData | kFileDeleteOnClose);
    EXPECT_EQ(file.Seek(0xFFFFFFFF), 0xFFFFFFFF);
    EXPECT_EQ(file.Tell(), 0xFFFFFFFF);
    EXPECT_EQ(file.Seek(kFar), kFar);
    EXPECT_EQ(file.Tell(), -1);
    file.Reserve(5);
    EXPECT_EQ(file.GetSize(), kFar + 5);
    ULARGE_INTEGER size = {};
    size.QuadPart = kFar + 20;
    EXPECT_EQ(file.SetSize(size), S_OK);
    EXPECT_EQ(file.WriteBytes("here"), 4);
    char buffer[5] = {};
    file.Seek(kFar);
    EXPECT_EQ(file.Read(buffer, 4), 4U);
    EXPECT_STREQ(buffer, "here");
}

TEST(FileCopy, CopiesTheRemainderAndEndsThere)
{
    const TempFolder folder;
    const String to = folder.Make(L"to", std::string(100, '#'));
    {
        Reader source(folder.Make(L"from", "0123456789"));
        Writer target(to);
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
    Reader file(folder.Make(L"from", bytes));
    FakeStream stream;
    stream.setSizeMovesPosition = true;
    clsFile held(&stream);
    EXPECT_TRUE(held.CopyFrom(file));
    EXPECT_EQ(stream.bytes, bytes);

    const String to = folder.Path(L"to");
    Writer back(to, FileDisposition::CreateAlways);
    held.Seek(0);
    EXPECT_TRUE(back.CopyFrom(held));
    back.Close();
    EXPECT_EQ(BytesOf(to), bytes);
}

TEST(FileCopy, NothingToCopySetsTheEnd)
{
    const TempFolder folder;
    Reader behindEnd(folder.Make(L"full", "abc"));
    behindEnd.Seek(30);
    clsFile closed;
    for (clsFile* source : {static_cast<clsFile*>(&behindEnd), &closed})
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
