// Streams on global memory.
#include <gtest/gtest.h>

#include <windows.h>

#include <objbase.h>
#include <objidl.h>

#include <cstring>
#include <string>
#include <thread>
#include <vector>

namespace
{

struct Releaser
{
    void operator()(IUnknown* object) const { object->Release(); }
};
using StreamHolder = std::unique_ptr<IStream, Releaser>;

StreamHolder MakeStream(HGLOBAL memory = nullptr, bool freeIt = true)
{
    IStream* stream = nullptr;
    EXPECT_EQ(CreateStreamOnHGlobal(memory, freeIt, &stream), S_OK);
    return StreamHolder(stream);
}

ULARGE_INTEGER Unsigned(unsigned long long value)
{
    ULARGE_INTEGER number;
    number.QuadPart = value;
    return number;
}

HRESULT SeekTo(const StreamHolder& stream, long long move, DWORD origin = STREAM_SEEK_SET)
{
    LARGE_INTEGER number;
    number.QuadPart = move;
    return stream->Seek(number, origin, nullptr);
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

std::string Read(const StreamHolder& stream, size_t count)
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

TEST(GlobalStream, WritesReadsAndGrows)
{
    const StreamHolder stream = MakeStream();
    EXPECT_EQ(SizeOf(stream), 0u);
    EXPECT_EQ(Read(stream, 4), "");
    Write(stream, "hello world");
    EXPECT_EQ(Position(stream), 11u);
    SeekTo(stream, 6);
    Write(stream, "there, you");
    EXPECT_EQ(SizeOf(stream), 16u);
    EXPECT_EQ(WholeContent(stream), "hello there, you");
    EXPECT_EQ(Position(stream), 16u);
    EXPECT_EQ(Read(stream, 1), "") << "nothing more at the end, and no failure";

    STATSTG status;
    ASSERT_EQ(stream->Stat(&status, STATFLAG_DEFAULT), S_OK);
    EXPECT_EQ(status.type, static_cast<DWORD>(STGTY_STREAM));
    EXPECT_EQ(status.pwcsName, nullptr);
}

TEST(GlobalStream, SeeksFromEachOrigin)
{
    const StreamHolder stream = MakeStream();
    Write(stream, "0123456789");
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
}

TEST(GlobalStream, SetSizeCutsAndGrowsAndLeavesThePosition)
{
    const StreamHolder stream = MakeStream();
    Write(stream, "0123456789");
    EXPECT_EQ(stream->SetSize(Unsigned(4)), S_OK);
    EXPECT_EQ(Position(stream), 10u);
    EXPECT_EQ(WholeContent(stream), "0123");
    EXPECT_EQ(stream->SetSize(Unsigned(6)), S_OK);
    EXPECT_EQ(WholeContent(stream).substr(0, 4), "0123");
    EXPECT_EQ(SizeOf(stream), 6u);
    EXPECT_EQ(stream->SetSize(Unsigned(0)), S_OK);
    EXPECT_EQ(WholeContent(stream), "");
    SeekTo(stream, 0);
    Write(stream, "again");
    EXPECT_EQ(WholeContent(stream), "again");
}

// Promises of the layer that the system does not make.
#ifndef _WIN32
TEST(GlobalStream, BytesThatAGrowthBringsAreZero)
{
    const StreamHolder stream = MakeStream();
    Write(stream, "0123456789");
    stream->SetSize(Unsigned(2));
    SeekTo(stream, 4);
    EXPECT_EQ(Read(stream, 1), "") << "behind the end";
    Write(stream, "x");
    EXPECT_EQ(WholeContent(stream), std::string("01\0\0x", 5));
    EXPECT_EQ(stream->SetSize(Unsigned(~0ull)), STG_E_MEDIUMFULL);
    EXPECT_EQ(SizeOf(stream), 5u);
}

TEST(GlobalStream, SmallWritesDoNotCopyTheBlockEachTime)
{
    const StreamHolder stream = MakeStream();
    HGLOBAL memory = nullptr;
    ASSERT_EQ(GetHGlobalFromStream(stream.get(), &memory), S_OK);
    const std::string bytes(64, 'x');
    const void* previous = nullptr;
    int moves = 0;
    for (int i = 0; i < (8 << 20) / 64; ++i)
    {
        Write(stream, bytes);
        const void* const data = GlobalLock(memory);
        GlobalUnlock(memory);
        moves += data != previous;
        previous = data;
    }
    EXPECT_EQ(GlobalSize(memory), 8u << 20);
    EXPECT_LT(moves, 40);
}

TEST(GlobalStream, HandleHoldsExactlyTheContent)
{
    const StreamHolder stream = MakeStream();
    for (int i = 0; i < 1000; ++i)
        Write(stream, "seven..");
    HGLOBAL memory = nullptr;
    ASSERT_EQ(GetHGlobalFromStream(stream.get(), &memory), S_OK);
    EXPECT_EQ(GlobalSize(memory), 7000u);
    EXPECT_EQ(GlobalFlags(memory), 0u) << "neither locked nor discarded";

    // Whoever makes the block smaller behind the stream's back gets short reads, no crash.
    ASSERT_EQ(GlobalReAlloc(memory, 3, GMEM_MOVEABLE), memory);
    SeekTo(stream, 0);
    EXPECT_EQ(Read(stream, 100), "sev");
    GlobalFree(memory);
    SeekTo(stream, 0);
    EXPECT_EQ(Read(stream, 100), "");
    ULONG written = 1;
    EXPECT_EQ(stream->Write("x", 1, &written), STG_E_MEDIUMFULL);
    EXPECT_EQ(written, 0u);
}
#endif

TEST(GlobalStream, WorksOnTheCallersBlockAndLeavesItAlone)
{
    const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, 5);
    std::memcpy(GlobalLock(memory), "bytes", 5);
    GlobalUnlock(memory);
    StreamHolder stream = MakeStream(memory, false);
    EXPECT_EQ(SizeOf(stream), 5u);
    EXPECT_EQ(Read(stream, 10), "bytes");
    Write(stream, " and more");
    HGLOBAL same = nullptr;
    ASSERT_EQ(GetHGlobalFromStream(stream.get(), &same), S_OK);
    EXPECT_EQ(same, memory);
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
    IStream* clonedStream = nullptr;
    ASSERT_EQ(stream->Clone(&clonedStream), S_OK);
    StreamHolder clone(clonedStream);
    EXPECT_EQ(Position(clone), 3u) << "a clone starts where the stream stands";
    SeekTo(clone, 5);
    EXPECT_EQ(Position(stream), 3u) << "and has a position of its own";
    Write(clone, "abc");
    EXPECT_EQ(Read(stream, 7), "34abc89");
    stream->SetSize(Unsigned(6));
    EXPECT_EQ(SizeOf(clone), 6u);

    HGLOBAL memory = nullptr, sameMemory = nullptr;
    EXPECT_EQ(GetHGlobalFromStream(stream.get(), &memory), S_OK);
    EXPECT_EQ(GetHGlobalFromStream(clone.get(), &sameMemory), S_OK);
    EXPECT_EQ(memory, sameMemory);
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
    EXPECT_EQ(source->CopyTo(target.get(), Unsigned(100), &read, &written), S_OK);
    EXPECT_EQ(read.QuadPart, 100u);
    EXPECT_EQ(written.QuadPart, 100u);
    EXPECT_EQ(Position(source), 105u);
    EXPECT_EQ(source->CopyTo(target.get(), Unsigned(~0ull), &read, &written), S_OK);
    EXPECT_EQ(read.QuadPart, bytes.size() - 105);
    EXPECT_EQ(written.QuadPart, bytes.size() - 105);
    EXPECT_EQ(WholeContent(target), "head " + bytes.substr(5));
    EXPECT_EQ(source->CopyTo(nullptr, Unsigned(1), nullptr, nullptr), STG_E_INVALIDPOINTER);
}

// Undefined on the system.
#ifndef _WIN32
TEST(GlobalStream, CopyingToACloneOfItselfEnds)
{
    const StreamHolder source = MakeStream();
    Write(source, std::string(200000, 'x'));
    SeekTo(source, 0);
    IStream* clone = nullptr;
    ASSERT_EQ(source->Clone(&clone), S_OK);
    const StreamHolder target(clone);
    SeekTo(target, 0, STREAM_SEEK_END);
    EXPECT_EQ(source->CopyTo(clone, Unsigned(~0ull), nullptr, nullptr), S_OK);
    EXPECT_EQ(WholeContent(source), std::string(400000, 'x'));
}

TEST(GlobalStream, ClonesMayBeUsedByDifferentThreads)
{
    const StreamHolder stream = MakeStream();
    stream->SetSize(Unsigned(4));
    std::vector<std::thread> threads;
    for (char letter = 'a'; letter < 'e'; ++letter)
    {
        IStream* clone = nullptr;
        ASSERT_EQ(stream->Clone(&clone), S_OK);
        threads.emplace_back(
            [letter, own = StreamHolder(clone)]
            {
                for (int i = 0; i < 2000; ++i)
                {
                    SeekTo(own, i * 4 + letter - 'a');
                    Write(own, std::string(1, letter));
                }
            });
    }
    for (std::thread& thread : threads)
        thread.join();
    std::string expected;
    for (int i = 0; i < 2000; ++i)
        expected += "abcd";
    EXPECT_EQ(WholeContent(stream), expected);
}
#endif

TEST(GlobalStream, AnswersForItsInterfacesAndRefusesTheRest)
{
    const StreamHolder stream = MakeStream();
    for (const IID* iid : {&IID_IUnknown, &IID_ISequentialStream, &IID_IStream})
    {
        void* object = nullptr;
        EXPECT_EQ(stream->QueryInterface(*iid, &object), S_OK);
        EXPECT_EQ(object, stream.get());
        EXPECT_EQ(stream->Release(), 1u);
    }
    void* object = stream.get();
    EXPECT_EQ(stream->QueryInterface(IID_IStorage, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(stream->LockRegion(Unsigned(0), Unsigned(1), LOCK_EXCLUSIVE), STG_E_INVALIDFUNCTION);
    EXPECT_EQ(stream->Commit(STGC_DEFAULT), S_OK);
    EXPECT_EQ(stream->Revert(), S_OK);

    HGLOBAL memory = nullptr;
    EXPECT_EQ(GetHGlobalFromStream(nullptr, &memory), E_INVALIDARG);
    EXPECT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, nullptr), E_INVALIDARG);
}

} // namespace
