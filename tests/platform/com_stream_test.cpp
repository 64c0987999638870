// Streams on global memory.
#include "support/com_pointer.h"
#include "support/run_in_threads.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <objbase.h>
#include <objidl.h>

#include <cstring>
#include <string>

namespace
{

using StreamHolder = qxtest::ComPointer<IStream>;

StreamHolder MakeStream(HGLOBAL memory = nullptr, bool freeIt = true)
{
    IStream* stream = nullptr;
    EXPECT_EQ(CreateStreamOnHGlobal(memory, freeIt, &stream), S_OK);
    return StreamHolder(stream);
}

HRESULT SeekTo(const StreamHolder& stream, long long move, DWORD origin = STREAM_SEEK_SET)
{
    return stream->Seek({.QuadPart = move}, origin, nullptr);
}

unsigned long long Position(const StreamHolder& stream)
{
    ULARGE_INTEGER position;
    EXPECT_EQ(stream->Seek(LARGE_INTEGER{}, STREAM_SEEK_CUR, &position), S_OK);
    return position.QuadPart;
}

unsigned long long SizeOf(const StreamHolder& stream)
{
    STATSTG status;
    EXPECT_EQ(stream->Stat(&status, STATFLAG_NONAME), S_OK);
    return status.cbSize.QuadPart;
}

void Write(const StreamHolder& stream, const std::string& bytes)
{
    ULONG written = 0;
    EXPECT_EQ(stream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), &written), S_OK);
    EXPECT_EQ(written, bytes.size());
}

std::string Read(const StreamHolder& stream, std::size_t count)
{
    std::string bytes(count, '?');
    ULONG read = 0;
    EXPECT_EQ(stream->Read(bytes.data(), static_cast<ULONG>(count), &read), S_OK);
    bytes.resize(read);
    return bytes;
}

std::string WholeContent(const StreamHolder& stream)
{
    SeekTo(stream, 0);
    return Read(stream, SizeOf(stream) + 10);
}

HGLOBAL BlockOf(const StreamHolder& stream)
{
    HGLOBAL memory = nullptr;
    EXPECT_EQ(GetHGlobalFromStream(stream.get(), &memory), S_OK);
    return memory;
}

StreamHolder CloneOf(const StreamHolder& stream)
{
    IStream* clone = nullptr;
    EXPECT_EQ(stream->Clone(&clone), S_OK);
    return StreamHolder(clone);
}

TEST(GlobalStream, MovesAndChangesItsSize)
{
    const StreamHolder stream = MakeStream();
    EXPECT_EQ(Read(stream, 4), "");
    Write(stream, "01234567");
    SeekTo(stream, 6);
    Write(stream, "6789");
    EXPECT_EQ(Read(stream, 1), "") << "nothing more at the end, and no failure";
    EXPECT_EQ(SeekTo(stream, -3, STREAM_SEEK_END), S_OK);
    EXPECT_EQ(Read(stream, 9), "789");
    EXPECT_EQ(SeekTo(stream, -6, STREAM_SEEK_CUR), S_OK);
    EXPECT_EQ(Read(stream, 2), "45");
    EXPECT_EQ(SeekTo(stream, -7, STREAM_SEEK_CUR), STG_E_SEEKERROR) << "before the start";
    EXPECT_EQ(SeekTo(stream, -11, STREAM_SEEK_END), STG_E_SEEKERROR);
    EXPECT_EQ(SeekTo(stream, 0, 3), STG_E_SEEKERROR);
    EXPECT_EQ(Position(stream), 6u) << "a failed seek moves nothing";
    EXPECT_EQ(SeekTo(stream, 1000), S_OK);
    EXPECT_EQ(SizeOf(stream), 10u) << "seeking alone doesn't grow it";
    Write(stream, "x");
    EXPECT_EQ(SizeOf(stream), 1001u);

    EXPECT_EQ(stream->SetSize({.QuadPart = 4}), S_OK);
    EXPECT_EQ(Position(stream), 1001u) << "stays behind the end";
    EXPECT_EQ(WholeContent(stream), "0123");
    EXPECT_EQ(stream->SetSize({.QuadPart = 6}), S_OK);
    EXPECT_EQ(WholeContent(stream).substr(0, 4), "0123");
    EXPECT_EQ(SizeOf(stream), 6u);
    EXPECT_EQ(stream->SetSize({.QuadPart = 0}), S_OK);
    EXPECT_EQ(WholeContent(stream), "");
}

// Guarantees that the layer makes and the system doesn't.
#ifndef _WIN32
TEST(GlobalStream, HandleHoldsExactlyTheContentAndZerosWhereItGrew)
{
    const StreamHolder stream = MakeStream();
    Write(stream, "0123456789");
    stream->SetSize({.QuadPart = 2});
    SeekTo(stream, 4);
    EXPECT_EQ(Read(stream, 1), "") << "behind the end";
    Write(stream, "x");
    EXPECT_EQ(WholeContent(stream), std::string("01\0\0x", 5));
    EXPECT_EQ(stream->SetSize({.QuadPart = ~0ull}), STG_E_MEDIUMFULL);
    EXPECT_EQ(SizeOf(stream), 5u);

    stream->SetSize({.QuadPart = 0});
    SeekTo(stream, 0);
    const HGLOBAL memory = BlockOf(stream);
    const std::string bytes(56, 'x');
    const void* previous = nullptr;
    int moves = 0;
    for (int i = 0; i < (7 << 20) / 56; ++i)
    {
        Write(stream, bytes);
        const void* const data = GlobalLock(memory);
        GlobalUnlock(memory);
        moves += data != previous;
        previous = data;
    }
    EXPECT_EQ(GlobalSize(memory), 7u << 20);
    EXPECT_LT(moves, 40) << "small writes don't copy the block each time";
    EXPECT_EQ(GlobalFlags(memory), 0u) << "neither locked nor discarded";

    // If the block is made smaller behind the stream's back, reads are short but don't crash.
    ASSERT_EQ(GlobalReAlloc(memory, 3, GMEM_MOVEABLE), memory);
    SeekTo(stream, 0);
    EXPECT_EQ(Read(stream, 100), "xxx");
    GlobalFree(memory);
    SeekTo(stream, 0);
    EXPECT_EQ(Read(stream, 100), "");
    ULONG written = 1;
    EXPECT_EQ(stream->Write("x", 1, &written), STG_E_MEDIUMFULL);
    EXPECT_EQ(written, 0u);
}

TEST(GlobalStream, ClonesMayBeUsedByDifferentThreads)
{
    const StreamHolder stream = MakeStream();
    stream->SetSize({.QuadPart = 4});
    const StreamHolder clones[] = {CloneOf(stream), CloneOf(stream), CloneOf(stream), CloneOf(stream)};
    qxtest::RunInThreads(4,
        [&clones](unsigned number)
        {
            for (unsigned i = 0; i < 2000; ++i)
            {
                SeekTo(clones[number], i * 4 + number);
                Write(clones[number], std::string(1, static_cast<char>('a' + number)));
            }
        });
    std::string expected;
    for (int i = 0; i < 2000; ++i)
        expected += "abcd";
    EXPECT_EQ(WholeContent(stream), expected);
}
#endif

TEST(GlobalStream, WorksOnTheCallersBlockAndLeavesItAlone)
{
    const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, 5);
    std::memcpy(GlobalLock(memory), "bytes", 5);
    GlobalUnlock(memory);
    StreamHolder stream = MakeStream(memory, false);
    EXPECT_EQ(Read(stream, 10), "bytes");
    Write(stream, " and more");
    EXPECT_EQ(BlockOf(stream), memory);
    stream.reset();
    ASSERT_GE(GlobalSize(memory), 14u);
    EXPECT_EQ(std::memcmp(GlobalLock(memory), "bytes and more", 14), 0);
    GlobalUnlock(memory);
    EXPECT_EQ(GlobalFree(memory), nullptr);
}

TEST(GlobalStream, FreesTheBlockWithTheLastStreamOnIt)
{
    StreamHolder stream = MakeStream();
    Write(stream, "0123456789");
    SeekTo(stream, 3);
    StreamHolder clone = CloneOf(stream);
    EXPECT_EQ(Position(clone), 3u) << "a clone starts where the stream stands";
    SeekTo(clone, 5);
    Write(clone, "abc");
    EXPECT_EQ(Read(stream, 7), "34abc89") << "and has a position of its own";
    stream->SetSize({.QuadPart = 6});
    const HGLOBAL memory = BlockOf(stream);
    EXPECT_EQ(BlockOf(clone), memory);
    stream.reset();
    EXPECT_EQ(WholeContent(clone), "01234a");
    clone.reset();
    EXPECT_EQ(GlobalFlags(memory), static_cast<UINT>(GMEM_INVALID_HANDLE));
}

TEST(GlobalStream, CopiesFromItsPositionToTheOthers)
{
    const StreamHolder source = MakeStream(), target = MakeStream();
    std::string bytes;
    for (int i = 0; i < 50000; ++i)
        bytes += "line " + std::to_string(i) + '\n';
    Write(source, bytes);
    SeekTo(source, 5);
    Write(target, "head ");
    ULARGE_INTEGER read, written;
    for (const unsigned long long count : {100ull, ~0ull})
    {
        EXPECT_EQ(source->CopyTo(target.get(), {.QuadPart = count}, &read, &written), S_OK);
        EXPECT_EQ(read.QuadPart, count == 100 ? 100 : bytes.size() - 105);
        EXPECT_EQ(written.QuadPart, read.QuadPart);
    }
    EXPECT_EQ(WholeContent(target), "head " + bytes.substr(5));
    EXPECT_EQ(source->CopyTo(nullptr, {.QuadPart = 1}, nullptr, nullptr), STG_E_INVALIDPOINTER);
}

TEST(GlobalStream, AnswersForItsInterfacesAndRefusesTheRest)
{
    const StreamHolder stream = MakeStream();
    void* object = nullptr;
    for (const IID* iid : {&IID_IUnknown, &IID_ISequentialStream, &IID_IStream})
    {
        EXPECT_EQ(stream->QueryInterface(*iid, &object), S_OK);
        EXPECT_EQ(object, stream.get());
        EXPECT_EQ(stream->Release(), 1u);
    }
    EXPECT_EQ(stream->QueryInterface(IID_IStorage, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(stream->LockRegion({.QuadPart = 0}, {.QuadPart = 1}, LOCK_EXCLUSIVE), STG_E_INVALIDFUNCTION);
    EXPECT_EQ(stream->Commit(STGC_DEFAULT), S_OK);
    HGLOBAL memory = nullptr;
    EXPECT_EQ(GetHGlobalFromStream(nullptr, &memory), E_INVALIDARG);
    EXPECT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, nullptr), E_INVALIDARG);
}

} // namespace
