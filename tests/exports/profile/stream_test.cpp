// Packed profiles, and jobs on streams.
#include "exports/profile/support.h"
#include "files/auto_release.h"

#include <gtest/gtest.h>
#include <windows.h>
#include <zlib.h>

#include <objbase.h>

#include <set>
#include <utility>

using namespace profiletest;

namespace
{

class Stream
{
public:
    explicit Stream(std::string_view bytes = {})
    {
        EXPECT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, _stream.Receive()), S_OK);
        _stream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), nullptr);
    }
    operator IStream*() const { return _stream.Get(); }

    std::string Bytes() const
    {
        STATSTG record = {};
        _stream->Stat(&record, STATFLAG_NONAME);
        std::string bytes(static_cast<size_t>(record.cbSize.QuadPart), '\0');
        _stream->Seek({}, STREAM_SEEK_SET, nullptr);
        _stream->Read(bytes.data(), static_cast<ULONG>(bytes.size()), nullptr);
        return bytes;
    }

private:
    qx::clsAutoRelease<IStream*> _stream;
};

// By zlib itself, at one go.
std::string Packed(std::string_view image)
{
    z_stream stream = {};
    deflateInit2(&stream, 9, Z_DEFLATED, -15, 9, Z_DEFAULT_STRATEGY);
    std::string packed(deflateBound(&stream, static_cast<uLong>(image.size())), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(image.data()));
    stream.avail_in = static_cast<uInt>(image.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return "ZxvQ" + packed;
}

std::string TreeOfStream(std::string_view bytes)
{
    return Tree(Job(ProfJobOpenStream(Stream(bytes))));
}

const std::string kImage = Utf16File(L"[/]\r\n {\r\n a=1\r\n [l]\r\n  {\r\n  b=text\r\n  }\r\n }\r\n");
constexpr char kTree[] = "a=1;[l]{b=text;}";

} // namespace

TEST(ProfilePacked, IsTheDeflatedFile)
{
    const TempFolder folder;
    Job job;
    for (int i = 0; i < 10000; ++i) // of more than one piece
        ProfAppendStringW(job, nullptr, L"name", Wide(std::to_string(i * 7919)));
    ASSERT_EQ(job.Save(folder.Path("plain")), PROF_OK);
    ASSERT_EQ(job.Save(folder.Path("packed"), PROF_SAVE_PACKED), PROF_OK);
    const std::string packed = BytesOf(folder.Path("packed"));
    EXPECT_EQ(packed, Packed(BytesOf(folder.Path("plain"))));
    EXPECT_EQ(Tree(Job(folder.Path("packed"))), Tree(job));

    const Stream stream("what was there, which may be longer than a packed profile");
    ASSERT_EQ(ProfSaveToStream(job, stream, PROF_SAVE_PACKED), PROF_OK);
    EXPECT_EQ(stream.Bytes(), packed);
}

TEST(ProfilePacked, FollowsTheFlags)
{
    const TempFolder folder;
    const std::string packed = Packed(kImage);
    const struct
    {
        const std::string& loaded;
        int32_t flags;
        const std::string& saved;
    } cases[] = {
        {kImage, 0, kImage},
        {kImage, PROF_SAVE_PACKED, packed},
        {kImage, PROF_SAVE_PACKED_AS_LOADED, kImage},
        {packed, 0, kImage},
        {packed, PROF_SAVE_PACKED, packed},
        {packed, PROF_SAVE_PACKED_AS_LOADED, packed},
        {packed, PROF_SAVE_PACKED_AS_LOADED | 0x700, packed},
    };
    for (const auto& test : cases)
    {
        const std::string path = folder.Make("file", test.loaded);
        {
            const Job job = Job::Exclusive(path);
            EXPECT_EQ(Tree(job), kTree);
            EXPECT_EQ(ProfSaveW(job, nullptr, test.flags), PROF_OK) << "in place";
        }
        EXPECT_EQ(BytesOf(path), test.saved) << test.flags;
    }
}

TEST(ProfilePacked, EmptyAndPackedAgain)
{
    const TempFolder folder;
    const Job empty;
    ASSERT_EQ(empty.Save(folder.Path("empty"), PROF_SAVE_PACKED), PROF_OK);
    EXPECT_EQ(BytesOf(folder.Path("empty")), Packed(""));

    std::string image = kImage;
    for (int layer = 0; layer < 16; ++layer)
        image = Packed(image);
    const std::tuple<std::string, int32_t, const char*> cases[] = {
        {Packed(""), PROF_OK, ""}, {"ZxvQ", PROF_OK, ""}, {"ZxvQ\xFF\xFF\xFF", PROF_OK, ""},
        {Packed("[/]"), PROF_ERR_LOCKED, ""}, // as a file of three bytes is
        {Packed("[/]\r\na=1"), PROF_OK, "a=1;"}, {Packed("[section]\r\na=1"), PROF_OK, "a=1;"}, {image, PROF_OK, kTree},
        {Packed(image), PROF_ERR_LOCKED, ""}, // nobody packs that many times
    };
    for (const auto& [bytes, error, tree] : cases)
    {
        const Job job(folder.Make("file", bytes));
        EXPECT_EQ(job.Error(), error) << testing::PrintToString(bytes);
        EXPECT_EQ(Tree(job), tree);
    }
}

// There is no check sum: what comes out before the damage is read.
TEST(ProfilePacked, DamageGivesSomeTree)
{
    const std::string packed = Packed(kImage);
    const std::set<int32_t> errors{PROF_OK, PROF_ERR_LOCKED, PROF_ERR_MALFORMED};
    const auto load = [&](std::string_view bytes)
    {
        const Job job(ProfJobOpenStream(Stream(bytes)));
        EXPECT_EQ(errors.count(job.Error()), 1u) << job.Error();
        return Tree(job);
    };
    for (size_t size = 0; size < packed.size(); ++size)
    {
        const std::string tree = load(std::string_view(packed).substr(0, size));
        EXPECT_LE(tree.size(), sizeof kTree + 2) << tree; // lists that were cut off have their braces
    }
    for (size_t bit = 0; bit < packed.size() * 8; ++bit)
    {
        std::string damaged = packed;
        damaged[bit / 8] ^= static_cast<char>(1 << bit % 8);
        load(damaged);
    }
    EXPECT_EQ(load(packed + "what follows"), kTree);
}

TEST(ProfileStream, IsHeldAndWrittenFromItsBeginning)
{
    const Stream stream(kImage + "what nobody reads");
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

        const Stream other;
        EXPECT_EQ(ProfSaveToStream(job, other, PROF_FORM_TEXT), PROF_OK);
        EXPECT_EQ(other.Bytes(), one);
        ProfEmptyList(job, nullptr);
        EXPECT_EQ(ProfSaveW(job, nullptr, PROF_FORM_TEXT), PROF_OK);
        EXPECT_EQ(stream.Bytes(), "");
    }
    const Job none(ProfJobOpenStream(nullptr));
    EXPECT_EQ(none.Error(), PROF_OK);
    ProfSetStringW(none, nullptr, L"a", L"1");
    EXPECT_EQ(ProfSaveToStream(none, nullptr, PROF_FORM_TEXT), PROF_ERR_WRITE_FAILED) << "there's nothing to write to";
    EXPECT_EQ(ProfSaveToStream(nullptr, stream, PROF_FORM_TEXT), PROF_OK);
}

TEST(ProfileStream, OfFewBytesIsAnEmptyProfile)
{
    for (const char* bytes : {"", "[", "[/]"})
    {
        const Job job{ProfJobOpenStream(Stream(bytes))};
        EXPECT_EQ(job.Error(), PROF_OK) << bytes;
        EXPECT_EQ(Tree(job), "");
    }
    EXPECT_EQ(TreeOfStream("[/]\r\na=1"), "a=1;");
    EXPECT_EQ(TreeOfStream("[section]\r\na=1"), "a=1;");
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
    const Job again(ProfJobOpenStreamObjectA(stream, "object", 2));
    EXPECT_EQ(Tree(again), "[object]{[l]{a=1;}}") << "one list deeper";
    EXPECT_EQ(Tree(Job(ProfJobOpenStreamObjectA(nullptr, nullptr, 1))), "");
    EXPECT_EQ(
        Tree(Job(ProfJobOpenStreamObjectW(Stream(Utf16File(L"[a]\r\nb=1\r\n}\r\nc=2")), L"o", 1))), "[a]{b=1;}c=2;")
        << "no rules of INI files";
}
