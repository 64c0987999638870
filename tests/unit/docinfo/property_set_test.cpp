// Summary information, and the opening of the storages that contain it.
#include "docinfo/property_set.h"

#include "docinfo/document_list.h"
#include "docinfo/storage.h"
#include "files/temp_files.h"
#include "support/compound_builder.h"
#include "support/record_bytes.h"
#include "support/temp_folder.h"
#include "unit/docinfo/document_in_memory.h"

#include <tuple>

using namespace qx;
using namespace qxtest;

namespace
{

using namespace std::string_literals;
using namespace std::string_view_literals;

const auto Number = BytesOfRecord<std::uint32_t>;

constexpr std::string_view kSummary = "\xE0\x85\x9F\xF2\xF9\x4F\x68\x10\xAB\x91\x08\x00\x2B\x27\xB3\xD9"sv;
constexpr std::string_view kDate = "\x00\x05\xB5\x7D\x96\x8D\xC0\x01"sv; // 2001-02-03 04:05:06

struct PropertyValue
{
    std::uint32_t id, type;
    std::string bytes;
};

std::string SetOf(const std::vector<PropertyValue>& values, std::string_view id = kSummary)
{
    std::string table, bytes;
    for (const PropertyValue& value : values)
    {
        table += Number(value.id) + Number(static_cast<std::uint32_t>(8 + values.size() * 8 + bytes.size()));
        bytes += Number(value.type) + value.bytes;
    }
    return "\xFE\xFF\0\0\x0A\0\0\0"s.append(16, '\0') + Number(1) + std::string(id) + Number(48) +
           Number(static_cast<std::uint32_t>(8 + table.size() + bytes.size())) +
           Number(static_cast<std::uint32_t>(values.size())) + table + bytes;
}

std::string Counted(std::string_view text, std::size_t unit = 1)
{
    return Number(static_cast<std::uint32_t>(text.size() / unit)) + std::string(text);
}

std::string Document(std::string_view title)
{
    const std::string set = SetOf({{2, VT_LPSTR, Counted(title)}});
    return CompoundBuilder().AddStream("WordDocument", "x").AddStream("\5SummaryInformation", set).Bytes();
}

std::string triedModes;
String lockedPath;

// Simulates a file whose storage is locked, and a file whose data arrives late.
HRESULT OpenUnlessLocked(const wchar_t* path, DWORD mode, IStorage** storage)
{
    triedModes += String(String::kFormatted, L"%x ", mode).NarrowText();
    if (lockedPath == path)
        return mode == STGM_SHARE_DENY_NONE ? STG_E_INVALIDFLAG : STG_E_LOCKVIOLATION;
    static int calls = 0;
    return ++calls < 3 ? E_PENDING : StgOpenStorage(path, nullptr, mode, nullptr, 0, storage);
}

int CopiesLeft()
{
    int count = 0;
    for (FileFinder finder(GetTempSubfolder() + L"\\_*doc*.tmp", false); finder.Next();)
        ++count;
    return count;
}

} // namespace

TEST(PropertySet, Values)
{
    const std::tuple<std::uint32_t, std::string, const wchar_t*> values[] = {{VT_EMPTY, Number(0), L"-"},
        {VT_NULL, "", L""}, {VT_I2, Number(0x1FFFE), L"-2"}, {VT_I4, Number(0xFFFFFFFE), L"-2"},
        {VT_UI2, Number(0x1FFFE), L"65534"}, {VT_UI4, Number(0xFFFFFFFE), L"4294967294"},
        {VT_R4, Number(0x3FC00000), L"1.5"}, {VT_R8, Number(0) + Number(0xBFF80000), L"-1.5"},
        {VT_BOOL, Number(1), L"true"}, {VT_BOOL, Number(0x10000), L"false"}, {VT_LPSTR, Counted("abc\0def"sv), L"abc"},
        {VT_LPSTR, Counted(""), L""}, {VT_LPSTR, Number(4) + "abc", L"-"}, // one byte too long
        {VT_BSTR, Counted("\xE4"), L"\x0434"},                             // code page 1251 is Cyrillic
        {VT_LPWSTR, Counted("a\0\x44\x04\0\0b\0"sv, 2), L"a\x0444"}, {VT_LPWSTR, Number(0x80000000) + "abc", L"-"},
        {VT_FILETIME, std::string(kDate), L""}, {VT_CY, std::string(8, '\1'), L""},
        {VT_VECTOR | VT_LPSTR, Number(1) + Counted("abc"), L""}, {VT_ARRAY | VT_I4, Number(1), L""}};
    for (const auto& [type, bytes, text] : values)
    {
        const ReadRecord record(ReadSummaryInformation, SetOf({{1, VT_I2, Number(1251)}, {2, type, bytes}}));
        EXPECT_EQ(record.Result(), 0);
        EXPECT_EQ(TextOf(record->Title), ReadableText(text)) << type;
    }
    const ReadRecord wide(
        ReadSummaryInformation, SetOf({{1, VT_I2, Number(1200)}, {4, VT_LPSTR, Counted("a\0b\0"sv)}}));
    EXPECT_EQ(TextOf(wide->Author), "ab");
}

TEST(PropertySet, FieldsAndDates)
{
    const auto text = [](std::uint32_t id, std::string_view value)
    {
        return PropertyValue{id, VT_LPSTR, Counted(value)};
    };
    const ReadRecord record(ReadSummaryInformation,
        SetOf({text(2, "t"), text(3, "s"), text(4, "a"), text(5, "k"), text(6, "c"), text(7, "no"), text(8, "l"),
            {12, VT_FILETIME, std::string(kDate)}, {13, VT_I4, Number(5)}, text(2, "second"), text(0x80000002, "no")}));
    EXPECT_EQ(record.Summary(), "t|s|a|l|k|c|2001-2-3 4:5:6|-");
    const std::string late = SetOf({{13, VT_FILETIME, std::string(8, '\xFF')}});
    EXPECT_EQ(ReadRecord(ReadSummaryInformation, late).Summary(), "-|-|-|-|-|-|-|-");
    EXPECT_EQ(ReadRecord(ReadSummaryInformation, SetOf({}).substr(0, 47)).Result(), -1);
    EXPECT_EQ(ReadRecord(ReadSummaryInformation, SetOf({}, std::string(16, 'x'))).Result(), -1);
}

// The extension matters only for files that aren't compound files, and for compound files without summary information.
TEST(PropertySet, ChoiceOfTheReader)
{
    const TempFolder folder;
    const std::string bare = CompoundBuilder().AddStream("A", "x").Bytes(), document = Document("title");
    const std::tuple<const wchar_t*, const std::string&, const char*, const wchar_t*, const wchar_t*> files[] = {
        {L"a.pdf", document, "title", L"property set", L""}, {L"a.doc", bare, "-", nullptr, L"no summary information"}};
    for (const auto& [name, bytes, title, reader, remark] : files)
    {
        const clsAutoRelease<clsDocu*> record = clsDocuList(0).Get(folder.Make(name, bytes), 1);
        EXPECT_TRUE(record->accessible);
        EXPECT_EQ(TextOf(record->Title), title);
        EXPECT_STREQ(record->reader, reader);
        EXPECT_EQ(record->remark.View(), remark);
    }
    EXPECT_FALSE(clsDocuList(0).Get(folder.Make(L"a.tif", bare), 1)->accessible);
}

TEST(PropertySet, LockedStorageIsCopied)
{
    const TempFolder folder;
    lockedPath = folder.Make(L"locked.doc", Document("title"));
    const int before = CopiesLeft();
    SetStorageOpening(OpenUnlessLocked);
    const clsAutoRelease<clsDocu*> record = clsDocu::Create(lockedPath, nullptr, 0, 0);
    {
        DocumentStorage storage(*record);
        EXPECT_EQ(storage.Open(lockedPath), S_OK);
        EXPECT_EQ(CopiesLeft(), before + 1);
        EXPECT_TRUE(OpenStream(storage.Root(), L"worddocument"));
    }
    SetStorageOpening(nullptr);
    EXPECT_EQ(CopiesLeft(), before);
    EXPECT_EQ(triedModes, "20 10 40 400040 20 20 20 ");
    EXPECT_EQ(ReadPropertySet(*record, folder.Path(L"none.doc")), -1);
}
