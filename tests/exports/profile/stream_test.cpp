// Packed profiles, and jobs on streams.
#include "exports/profile/support.h"
#include "support/memory_stream.h"
#include "support/zlib_reference.h"

#include <qxut23/profile_source.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <tuple>

using namespace profiletest;
using Stream = qxtest::MemoryStream;

namespace
{

// Packs the image with a single call of zlib.
std::string Packed(std::string_view image)
{
    return "ZxvQ" + qxtest::DeflatedByZlib(image, 9, -15, 9, Z_DEFAULT_STRATEGY);
}

const std::string kImage = Utf16File(L"[/]\r\n {\r\n a=1\r\n [l]\r\n  {\r\n  b=text\r\n  }\r\n }\r\n");
constexpr char kTree[] = "a=1;[l]{b=text;}";

} // namespace

TEST(ProfilePacked, IsTheDeflatedFile)
{
    const TempFolder folder;
    const Job job;
    for (int i = 0; i < 10000; ++i) // larger than one block
        ProfAppendStringW(job, nullptr, L"name", Wide(std::to_string(i * 7919)));
    ASSERT_EQ(job.Save(folder.Path("plain")), PROF_OK);
    ASSERT_EQ(job.Save(folder.Path("packed"), PROF_SAVE_PACKED), PROF_OK);
    EXPECT_EQ(BytesOf(folder.Path("packed")), Packed(BytesOf(folder.Path("plain"))));
    EXPECT_EQ(Tree(Job(folder.Path("packed"))), Tree(job));
    ProfEmptyList(job, nullptr);
    ASSERT_EQ(job.Save(folder.Path("packed"), PROF_SAVE_PACKED), PROF_OK);
    EXPECT_EQ(BytesOf(folder.Path("packed")), Packed(""));
}

TEST(ProfilePacked, FollowsTheFlags)
{
    const TempFolder folder;
    const std::string packed = Packed(kImage);
    const std::tuple<std::string, std::int32_t, std::string> cases[] = {{kImage, PROF_SAVE_PACKED, packed},
        {kImage, PROF_SAVE_PACKED_AS_LOADED, kImage}, {packed, 0, kImage}, {packed, PROF_SAVE_PACKED, packed},
        {packed, PROF_SAVE_PACKED_AS_LOADED | 0x700, packed}};
    for (const auto& [loaded, flags, saved] : cases)
    {
        const std::string path = folder.Make("file", loaded);
        {
            const Job job = Job::Exclusive(path);
            EXPECT_EQ(Tree(job), kTree);
            EXPECT_EQ(ProfSaveW(job, nullptr, flags), PROF_OK) << "in place";
        }
        EXPECT_EQ(BytesOf(path), saved) << flags;
    }
}

TEST(ProfilePacked, FewBytesAndPackedAgain)
{
    const TempFolder folder;
    std::string image = kImage;
    for (int layer = 0; layer < 16; ++layer)
        image = Packed(image);
    const std::string packed = Packed(kImage), cut = packed.substr(0, packed.size() - 1);
    constexpr std::uint32_t kDamaged = QXUT_SOURCE_DAMAGED, kIgnored = QXUT_SOURCE_IGNORED;
    const std::tuple<std::string, std::int32_t, const char*, std::uint32_t> cases[] = {
        {"ZxvQ", PROF_OK, "", kDamaged}, {packed, PROF_OK, kTree, 0},
        {packed + "what follows", PROF_OK, kTree, kIgnored}, {cut, PROF_OK, kTree, kDamaged},
        {Packed(cut), PROF_OK, kTree, kDamaged}, {"ZxvQ\xFF\xFF\xFF", PROF_OK, "", kDamaged},
        {Packed("[/]"), PROF_ERR_LOCKED, "", 0}, // like a file of three bytes
        {Packed("[/]\r\na=1"), PROF_OK, "a=1;", 0}, {Packed("[section]\r\na=1"), PROF_OK, "a=1;", 0},
        {image, PROF_OK, kTree, 0}, {Packed(image), PROF_ERR_LOCKED, "", 0} // exceeds the limit of nested packing
    };
    for (const auto& [bytes, error, tree, source] : cases)
    {
        const Job job(folder.Make("file", bytes));
        EXPECT_EQ(job.Error(), error) << testing::PrintToString(bytes);
        EXPECT_EQ(Tree(job), tree);
        EXPECT_EQ(QxProfGetSource(job) & (kDamaged | kIgnored), source) << testing::PrintToString(bytes);
    }
}

// An entry takes far more memory than the two bytes of its line.
TEST(ProfilePacked, LimitIncludesTheEntries)
{
    const TempFolder folder;
    std::string leaves = "[/]\n", lists = leaves;
    for (int i = 0; i < 50000; ++i)
    {
        leaves += "a\n";
        lists += "[\n";
    }
    for (const std::string& text : {leaves, lists, Packed(lists)})
    {
        const Wide path(folder.Make("file", Packed(text)));
        const Job refused(QxProfJobOpen(path, 0, 1000000));
        EXPECT_EQ(refused.Error(), PROF_ERR_LOCKED);
        EXPECT_TRUE(QxProfGetSource(refused) & QXUT_SOURCE_TOO_LARGE);
        EXPECT_EQ(ProfEnumW(
                      refused, nullptr, [](auto...) { return 0; }, nullptr),
            1)
            << "empty";
        ProfSetStringW(refused, nullptr, L"large", Wide(2000000, L'x'));
        EXPECT_EQ(ProfGetStringLengthW(refused, nullptr, L"large"), 2000000) << "only loading is limited";
        for (const std::uint32_t flags : {0u, QXUT_PROFILE_ANY_SIZE})
            EXPECT_EQ(Job(QxProfJobOpen(path, flags, 0)).Error(), PROF_OK);
    }
}

TEST(ProfileStream, IsHeldAndWrittenFromItsBeginning)
{
    const Stream stream(kImage + "what nobody reads");
    stream.Seek(9);
    {
        const Job job(ProfJobOpenStream(stream));
        EXPECT_EQ(job.Error(), PROF_OK);
        EXPECT_EQ(Tree(job), kTree);
        ProfDeleteListW(job, nullptr, L"l");
        EXPECT_EQ(ProfSaveToStream(job, nullptr, PROF_FORM_TEXT), PROF_OK);
        const std::string one = Utf16File(L"[/]\r\n {\r\n a=1\r\n }\r\n");
        EXPECT_EQ(stream.Bytes(), one);
        EXPECT_EQ(ProfSaveToStream(job, nullptr, PROF_SAVE_PACKED), PROF_OK);
        EXPECT_EQ(stream.Bytes(), Packed(one));
        EXPECT_EQ(ProfSaveW(job, L"(sTREAM)", PROF_FORM_TEXT), PROF_OK) << "a stream's name";
        EXPECT_EQ(stream.Bytes(), one);
        const Stream other("what was there, which is longer than what comes, and has to go as a whole");
        EXPECT_EQ(ProfSaveToStream(job, other, PROF_FORM_TEXT), PROF_OK);
        EXPECT_EQ(other.Bytes(), one);
        ProfEmptyList(job, nullptr);
        EXPECT_EQ(ProfSaveW(job, nullptr, PROF_FORM_TEXT), PROF_OK);
        EXPECT_EQ(stream.Bytes(), "");
    }
    EXPECT_EQ(stream.References(), 1u);
    const Job none(ProfJobOpenStream(nullptr));
    EXPECT_EQ(none.Error(), PROF_OK);
    ProfSetStringW(none, nullptr, L"a", L"1");
    EXPECT_EQ(ProfSaveToStream(none, nullptr, PROF_FORM_TEXT), PROF_ERR_WRITE_FAILED) << "there's nothing to write to";
    EXPECT_EQ(ProfSaveToStream(nullptr, stream, PROF_FORM_TEXT), PROF_OK);

    for (const char* bytes : {"", "[", "[/]"})
    {
        const Job job{ProfJobOpenStream(Stream(bytes))};
        EXPECT_EQ(job.Error(), PROF_OK) << "few bytes are an empty profile: " << bytes;
        EXPECT_EQ(Tree(job), "");
    }
}

TEST(ProfileStream, ObjectHasARootOfItsOwnName)
{
    const Stream stream;
    {
        const Job job(ProfJobOpenStreamObjectW(stream, L"object", 2));
        EXPECT_EQ(job.Error(), PROF_OK);
        ProfSetStringW(job, nullptr, L"/l/a", L"1");
        EXPECT_EQ(ProfSaveToStream(job, nullptr, PROF_FORM_TEXT), PROF_OK);
    }
    EXPECT_EQ(stream.Bytes(), Utf16File(L"  [object]\r\n   {\r\n   [l]\r\n\t{\r\n\ta=1\r\n\t}\r\n   }\r\n").substr(2));
    stream.Seek(0);
    EXPECT_EQ(Tree(Job(ProfJobOpenStreamObjectA(stream, "object", 2))), "[object]{[l]{a=1;}}") << "one list deeper";
    EXPECT_EQ(Tree(Job(ProfJobOpenStreamObjectA(nullptr, nullptr, 1))), "");
    const Stream sections(Utf16File(L"[a]\r\nb=1\r\n}\r\nc=2"));
    EXPECT_EQ(Tree(Job(ProfJobOpenStreamObjectW(sections, L"o", 1))), "[a]{b=1;}c=2;") << "no rules of INI files";

    const Stream larger("what others keep" + Utf16File(L"[a]\r\nb=1\r\n").substr(2));
    larger.Seek(sizeof "what others keep" - 1);
    EXPECT_EQ(Tree(Job(ProfJobOpenStreamObjectW(larger, L"o", 1))), "[a]{b=1;}") << "from where the stream stands";
}
