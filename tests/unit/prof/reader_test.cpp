// Loading and saving of jobs: text by the code page, files in use, targets that are too small, packed images.
#include "core/system_values.h"
#include "core/ticks.h"
#include "files/handle_holder.h"
#include "prof/output.h"
#include "prof/packed_form.h"
#include "prof/path.h"
#include "support/fake_stream.h"
#include "support/temp_folder.h"
#include "unit/prof/job_support.h"

#include <algorithm>
#include <cstdint>
#include <tuple>

using namespace qx;
using namespace qxtest;

TEST(ProfReader, EightBitTextByTheCodePage)
{
    const unsigned before = DefaultCodePage();
    const std::tuple<unsigned, const char*, const wchar_t*> cases[] = {
        {1252, "[/]\ngr\xFC\xDF=\x80\n", L"gr\u00FC\u00DF=\u20AC;"},
        {1251, "[/]\n\xEF\xF0=\xFF\n", L"\u043F\u0440=\u044F;"},
        // The second byte of a character may be a syntax character, like 0x5B and 0x7D here.
        {932, "[/]\n\x83\x5B=\x83\x7D\n[\x83\x5B]\n", L"\u30BC=\u30DE;[\u30BC]{}"}};
    for (const auto& [codePage, bytes, tree] : cases)
    {
        defaultCodePage = codePage;
        const MemoryStream stream(bytes);
        clsFileRO file(stream);
        const JobHolder job = NewJob();
        EXPECT_TRUE(job->Load(file));
        EXPECT_STREQ(Tree(job->Root()), tree) << codePage;
    }
    defaultCodePage = before;
}

// A job tries for ten seconds to open a file that another program has open.
TEST(ProfFile, OpenElsewhere)
{
    static unsigned long long ticks; // in milliseconds
    const auto secondsOf = [](const auto& operation)
    {
        ticks = 0;
        DecideTickSource([] { return ticks += 1000; });
        operation();
        DecideTickSource(GetTickCount64);
        return static_cast<double>(ticks) / 1000;
    };
    const TempFolder folder;
    const String path = folder.Make(L"file", "[/]\na=1\n");
    clsGenericHandleObjectAutoRelease keeper(OpenToRead(path), true);
    for (const ProfMode mode : {ProfMode::Read, ProfMode::Hold})
    {
        const JobHolder job = NewJob(mode);
        EXPECT_NEAR(secondsOf([&] { job->Open(path); }), 11, 1);
        EXPECT_EQ(job->Error(), kProfLocked);
    }
    EXPECT_NEAR(secondsOf([&] { EXPECT_EQ(NewJob()->Save(path, 0), kProfCannotWrite); }), 11, 1);
    keeper.Release();
    EXPECT_EQ(BytesOf(path), "[/]\na=1\n");
}

TEST(ProfStream, TargetWithoutRoomKeepsWhatItHolds)
{
    const JobHolder job = NewJob();
    SetLeafByPath(job->Root(), L"a", L"a text that is longer than what is there");
    for (const HRESULT answer : {S_OK, STG_E_MEDIUMFULL})
    {
        qxtest::FakeStream stream;
        stream.bytes = "what is there";
        stream.writeLimit = 5;
        stream.writeResult = stream.setSizeResult = answer;
        EXPECT_EQ(job->Serialise(&stream, 0), kProfWriteFailed);
        EXPECT_EQ(stream.bytes.substr(0, 13), "what is there");
        EXPECT_EQ(stream.bytes.size(), SUCCEEDED(answer) ? 13u : 18u);
    }
}

// A few bytes can decompress to an enormous size. The unpacked size is limited to the largest size that can be read.
TEST(ProfPacked, EndsAtTheLargestSize)
{
    clsProfOutput image, packed;
    for (int i = 0; i < 100; ++i)
        image.SetUsed(std::fill_n(image.ReserveBytes(0x10000), 0x10000, 'x'));
    PackImage(image, packed);
    EXPECT_LT(packed.Bytes(), 10000u);
    for (const long long largest : {1000ll, 2000000ll, 100ll * 0x10000 - 1, 100ll * 0x10000})
    {
        const MemoryStream stream, target;
        clsFileRW source(stream), unpacked(target);
        ASSERT_TRUE(packed.WriteTo(source));
        source.Seek(std::int64_t{4});
        EXPECT_EQ(UnpackImage(source, unpacked, largest), largest == 100ll * 0x10000 ? 0u : kSourceTooLarge);
        EXPECT_LE(unpacked.GetSize(), largest);
    }
}
