#include "module/module_description.h"

#include "module/module_image.h"
#include "module/module_paths.h"
#include "module/version_block.h"
#include "support/filled.h"
#include "support/temp_folder.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

using namespace qx;
using namespace qxtest;

namespace
{

constexpr std::uint32_t kBelow = 0x80000000; // marks the offset of a directory

class Bytes : public std::vector<std::uint8_t>
{
public:
    using vector::vector;

    template <class Value>
    void Put(std::size_t place, Value value)
    {
        resize(std::max(size(), place + sizeof value));
        std::memcpy(data() + place, &value, sizeof value);
    }
    void Add(std::wstring_view text) // with its terminator
    {
        for (const wchar_t unit : text)
            Put(size(), unit);
        Put(size(), wchar_t{0});
    }
    void Align() { resize((size() + 3) / 4 * 4); }
};

// Returns a node of a version block.
Bytes VersionNode(std::wstring_view key, const std::vector<Bytes>& children)
{
    Bytes node(6);
    node.Put(4, std::uint16_t{1});
    node.Add(key);
    node.Align();
    for (const Bytes& child : children)
    {
        node.Align();
        node.insert(node.end(), child.begin(), child.end());
    }
    node.Put(0, static_cast<std::uint16_t>(node.size()));
    return node;
}

Bytes VersionText(std::wstring_view key, std::wstring_view text)
{
    Bytes node = VersionNode(key, {});
    node.Add(text);
    node.Put(0, static_cast<std::uint16_t>(node.size()));
    node.Put(2, static_cast<std::uint16_t>(text.size() + 1));
    return node;
}

// Returns the translation 0409, 04b0.
Bytes Translation()
{
    Bytes value = VersionNode(L"Translation", {});
    value.Put(value.size(), 0x04B00409);
    value.Put(0, static_cast<std::uint16_t>(value.size()));
    value.Put(2, 4); // the value has 4 bytes and is binary
    return VersionNode(L"VarFileInfo", {value});
}

// A loaded image with one section. Its resources are at kResources.
class FakeImage : public Bytes
{
public:
    static constexpr std::uint32_t kResources = 0x1000, kSize = 0x2000;
    static constexpr std::size_t kHeader = 0x80, kOptional = kHeader + 24;
    static constexpr std::size_t kResourcesPlace = kOptional + 112 + 16, kSection = kOptional + 240;

    FakeImage() : Bytes(kSize)
    {
        Put(0, 'M' | 'Z' << 8);
        Put<std::uint32_t>(0x3C, kHeader);
        Put(kHeader, 'P' | 'E' << 8);
        Put<std::uint16_t>(kHeader + 6, 1);
        Put<std::uint32_t>(kHeader + 8, 1'000'000'000);
        Put<std::uint16_t>(kHeader + 20, 240);
        Put<std::uint16_t>(kOptional, 0x20B);
        Put<std::uint32_t>(kOptional + 56, kSize);
        Put<std::uint32_t>(kResourcesPlace, kResources);
        Put<std::uint32_t>(kSection + 12, 0x1800);
    }

    // Adds a resource directory; offsets are relative to the start of the resources.
    void Directory(std::uint32_t place, std::uint16_t named, std::uint16_t numbered)
    {
        Put(kResources + place + 12, named);
        Put(kResources + place + 14, numbered);
    }
    void Entry(std::uint32_t directory, unsigned index, std::uint32_t name, std::uint32_t place)
    {
        Put(kResources + directory + 16 + index * 8, name);
        Put(kResources + directory + 16 + index * 8 + 4, place);
    }
    void Leaf(std::uint32_t place, std::uint32_t address, std::uint32_t length)
    {
        Put(kResources + place, address);
        Put(kResources + place + 4, length);
    }

    HMODULE Module() const { return reinterpret_cast<HMODULE>(const_cast<std::uint8_t*>(data())); }
};

// Returns an image with three resource directories: types at 0, names of type 16 at 0x100, and languages with two
// leaves at 0x200.
FakeImage ImageWithBlock()
{
    FakeImage image;
    image.Directory(0, 1, 2);
    image.Entry(0, 0, kBelow | 0x400, kBelow | 0x300); // has a name and is skipped
    image.Entry(0, 1, 3, kBelow | 0x300);
    image.Entry(0, 2, 16, kBelow | 0x100);
    image.Directory(0x100, 0, 1);
    image.Entry(0x100, 0, 1, kBelow | 0x200);
    image.Directory(0x200, 0, 2);
    image.Entry(0x200, 0, 0x407, 0x500);
    image.Entry(0x200, 1, 0x409, 0x510);
    image.Leaf(0x500, 0x1600, 0x40);
    image.Leaf(0x510, 0x1700, 0x40);
    return image;
}

std::ptrdiff_t PlaceOfBlock(const FakeImage& image)
{
    const void* const block = FindVersionBlock(image.Module());
    return block ? static_cast<const std::uint8_t*>(block) - image.data() : -1;
}

Bytes Block(std::wstring_view language, const std::vector<Bytes>& texts, bool withTranslation = true)
{
    std::vector<Bytes> children = {VersionNode(L"StringFileInfo", {VersionNode(language, texts)})};
    if (withTranslation)
        children.push_back(Translation());
    return VersionNode(L"VS_VERSION_INFO", children);
}

String Describe(HMODULE module, const Bytes& block)
{
    Bytes copy = block;
    copy.resize(2 * block.size()); // room for the system
    return DescribeVersionBlock(module, copy.data());
}

} // namespace

TEST(ModuleImage, TheLastLanguageOfTheBlockWithTheNumberOneAlone)
{
    EXPECT_EQ(LinkTimeOf(ImageWithBlock().Module()), 1'000'000'000u);
    const std::pair<void (*)(FakeImage&), std::ptrdiff_t> cases[] = {{[](FakeImage&) {}, 0x1700},
        {[](FakeImage& image) { image.Entry(0x100, 0, 2, kBelow | 0x200); }, -1},
        {[](FakeImage& image) { image.Directory(0x100, 0, 2); }, -1},
        {[](FakeImage& image) { image.Directory(0x100, 1, 1), image.Entry(0x100, 1, 1, kBelow | 0x200); }, 0x1700},
        {[](FakeImage& image) { image.Entry(0, 2, 17, kBelow | 0x100); }, -1},
        // Nothing is read past the end.
        {[](FakeImage& image) { image.Leaf(0x510, FakeImage::kSize - 0x10, 0x40); }, 0x1600},
        {[](FakeImage& image) { image.Entry(0x100, 0, 1, 0xFFFFFFF0); }, -1},
        {[](FakeImage& image) { image.Entry(0, 2, 16, 0xFFFFFFF0); }, -1},
        {[](FakeImage& image) { image.Put<std::uint32_t>(FakeImage::kResourcesPlace, 0xFFFFFFF0); }, -1},
        {[](FakeImage& image) { image.Put<std::uint32_t>(0x3C, 0xFFFFFFF0); }, -1},
        {[](FakeImage& image) { image.Put(0, 'Z' | 'M' << 8); }, -1}};
    int row = 0;
    for (const auto& [change, place] : cases)
    {
        FakeImage image = ImageWithBlock();
        change(image);
        EXPECT_EQ(PlaceOfBlock(image), place) << "row " << row++;
    }
    EXPECT_EQ(FindVersionBlock(nullptr), nullptr);

    // A section of resources replaces the directory.
    FakeImage image = ImageWithBlock();
    image.Put<std::uint32_t>(FakeImage::kResourcesPlace, 0x1900);
    EXPECT_EQ(PlaceOfBlock(image), -1);
    std::memcpy(&image[FakeImage::kSection], ".rsrc", 5);
    image.Put<std::uint32_t>(FakeImage::kSection + 12, FakeImage::kResources);
    EXPECT_EQ(PlaceOfBlock(image), 0x1700);
}

TEST(ModuleDescription, VersionBuildAndLinkTime)
{
    const FakeImage image;
    const auto describe = [&image](const std::vector<Bytes>& texts)
    {
        return Describe(image.Module(), Block(L"040904b0", texts));
    };
    // A module that doesn't exist has no file name; the link time is 9 September 2001, 1:46 UTC.
    const Bytes version = VersionText(L"FileVersion", L"5.6"), own = VersionText(L"CompanyName", L"trelmo or so");
    const String linked = describe({own, version});
    EXPECT_EQ(linked.Length(), wcslen(L" 5.6 (01-09-09 01:46)"));
    EXPECT_EQ(linked.Compare(L" 5.6 (01-09-0", 13), 0) << linked.NarrowText();
    EXPECT_STREQ(describe({own, version, VersionText(L"Build", L"77")}), L" 5.6 77");
    EXPECT_STREQ(describe({own, version, VersionText(L"Build", L"")}), linked);
    for (const wchar_t* company : {L"Trelmo or so", L"trelmos", L""})
        EXPECT_STREQ(describe({VersionText(L"CompanyName", company), version}), L" 5.6");
    EXPECT_STREQ(describe({version}), L" 5.6");
    EXPECT_STREQ(describe({own}), L"");
    EXPECT_STREQ(describe({own, VersionText(L"FileVersion", L"")}), L"");
    EXPECT_STREQ(Describe(GetModuleHandleW(nullptr), Block(L"040904b0", {version})), ProcessPaths().file + L" 5.6");
}

TEST(ModuleDescription, WithoutATranslationTheFirstLanguageCounts)
{
    const std::vector<Bytes> texts = {VersionText(L"FileVersion", L"5.6")};
    EXPECT_STREQ(Describe(nullptr, Block(L"07e504b0", texts)).Right(4), L"");
    EXPECT_STREQ(Describe(nullptr, Block(L"07e504b0", texts, false)).Right(4), L" 5.6");
    EXPECT_STREQ(Describe(nullptr, Block(L"A00904b0", texts, false)), L"");
    EXPECT_STREQ(Describe(nullptr, VersionNode(L"VS_VERSION_INFO", {})), L"");
    EXPECT_STREQ(Describe(nullptr, VersionNode(L"VS_VERSION_INFO", {VersionNode(L"StringFileInfo", {})})), L"");
}

TEST(ModuleDescription, OfModulesWithAndWithoutAVersion)
{
    EXPECT_STREQ(GetModuleDescription(nullptr), L"");
    const HMODULE program = GetModuleHandleW(nullptr);
    const String description = ProcessPaths().file + L" 1.2.3.4" + (LinkTimeOf(program) ? L" (" : L"");
    EXPECT_STREQ(GetModuleDescription(program).Left(description.Length()), description);

    const HMODULE plain = LoadLibraryW(L"" QXUT_SIBLING_FOLDER "/qxmodule_host.dll");
    ASSERT_NE(plain, nullptr);
    testing::internal::CaptureStdout();
    const String text = GetModuleDescription(plain);
    const std::string output = testing::internal::GetCapturedStdout();
    EXPECT_STREQ(text, LibraryPaths().file + L"  <no version info>");
    EXPECT_EQ(output.find("** EnumResourceTypes: ERROR "), 0u) << output;
    FreeLibrary(plain);
}

TEST(ModuleDescription, OfFilesByTheirNames)
{
    const TempFolder folder;
    const String copy = folder.Path(L"Copy.bin");
    ASSERT_TRUE(CopyFileW(ModulePath(nullptr), copy, FALSE));
    EXPECT_STREQ(GetFileVersionValue(copy, L"CompanyName"), L"trelmo tests");
    EXPECT_STREQ(GetFileVersionValue(copy, L"InternalName"), L"");
    EXPECT_STREQ(GetFileVersionValue(copy, Filled(L'k', 200)), L"");
    String description(L"before"), company;
    EXPECT_STREQ(GetFileVersionText(copy, &description, &company), L"1.2.3.4");
    EXPECT_STREQ(company, L"trelmo tests");
    EXPECT_STREQ(description, L"Tests of the module frame");
    EXPECT_STREQ(GetFileVersionText(folder.Path(L"none"), &description), L"");
    EXPECT_STREQ(description, L"");

    EXPECT_STREQ(GetNamedModuleDescription(copy).get(), L"Copy.bin 1.2.3.4");
    EXPECT_STREQ(GetNamedModuleDescription(folder.Path(L"none")).get(), L"none ");
    EXPECT_STREQ(
        GetNamedModuleDescription(ProcessPaths().file).get(), GetModuleDescription(GetModuleHandleW(nullptr)).Text());
}
