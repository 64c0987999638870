// Document information through the exported functions.
#include <qxut23/docinfo.h>

#include "platform/system_support.h"

#include <qxut23/docinfo_explain.h>

#include <oleauto.h>

#if !defined(_WIN32) // for the tests with pipes and small stacks
#include "support/damage.h"
#include "support/small_stack.h"

#include <filesystem>
#include <fstream>
#include <iterator>

#include <sys/stat.h>
#endif

#include <algorithm>
#include <array>
#include <string>
#include <tuple>

using namespace qxtest;

namespace
{

class Documents : public testing::Test
{
protected:
    ~Documents() override { UtilDocInfoClose(_list); }

    Text Make(const wchar_t* name, std::string_view bytes) const
    {
        MakeFile(_folder / name, bytes);
        return _folder / name;
    }

    const Folder _folder;
    const HUTDOCINFO _list = UtilDocInfoOpen(10);
};

// On windows the system separates the parts of a path by backslashes, the test by slashes.
std::string Slashes(std::string text)
{
    std::replace(text.begin(), text.end(), '\\', '/');
    return text;
}

// The nine outputs of a request. Each begins with a value that the call must clear.
class Outputs
{
public:
    explicit Outputs(std::uint32_t size = sizeof(QxUtDocumentInfo))
        : info{size, 0, &values[0], &values[1], &values[2], &values[3], &values[4], &values[5], &values[6], &values[7],
              &values[8]}
    {
        for (VARIANT& value : values)
        {
            value.vt = VT_BSTR;
            value.bstrVal = SysAllocString(L"old");
        }
    }
    Outputs(const Outputs&) = delete;
    Outputs& operator=(const Outputs&) = delete;
    ~Outputs()
    {
        for (VARIANT& value : values)
            VariantClear(&value);
    }

    // Returns the values, each followed by a separator. Paths have slashes.
    std::string All() const
    {
        std::string all;
        for (const VARIANT& value : values)
            all += (value.vt == VT_BSTR       ? Text(value.bstrVal).Narrow()
                       : value.vt == VT_DATE  ? "date"
                       : value.vt == VT_EMPTY ? "-"
                                              : "another type") +
                   "|";
        return Slashes(all);
    }

    std::array<VARIANT, 9> values{};
    const QxUtDocumentInfo info;
};

constexpr char kPage[] = "<head><title>t</title><o:DocumentProperties><o:Author>a</o:Author>"
                         "<o:Created>2001-07-02T12:00:00Z</o:Created></o:DocumentProperties></head>";
constexpr char kUnchanged[] = "old|old|old|old|old|old|old|old|old|";

} // namespace

TEST_F(Documents, AllOutputs)
{
    const Text path = Make(L"page.htm", kPage), undated = Make(L"undated.htm", "");
    const std::tuple<const Text&, std::uint32_t, std::string> cases[] = {
        {path, 80, "date|date|t|-|a|-|-|-|" + Slashes(path.Narrow()) + "|"},
        {undated, 80, "-|date|-|-|-|-|-|-|" + Slashes(undated.Narrow()) + "|"}, // with the file's own date
        {path, 72, "date|date|t|-|a|-|-|-|old|"}, {path, 64, kUnchanged}};
    for (const auto& [file, size, expected] : cases)
    {
        const Outputs outputs(size);
        EXPECT_EQ(UtilDocInfoGet(_list, file, &outputs.info, 0), 1);
        EXPECT_EQ(outputs.All(), expected);
    }
    Outputs outputs;
    UtilDocInfoGet(_list, path, &outputs.info, 0);
    SYSTEMTIME universal = {2001, 7, 0, 2, 12, 0, 0, 0}, local = {};
    SystemTimeToTzSpecificLocalTime(nullptr, &universal, &local);
    double date = 0;
    SystemTimeToVariantTime(&local, &date);
    EXPECT_DOUBLE_EQ(outputs.values[0].date, date);
    QxUtDocumentInfo nothing = {};
    nothing.size = sizeof nothing;
    EXPECT_EQ(UtilDocInfoGet(_list, path, &nothing, 0), 1);
    EXPECT_EQ(UtilDocInfoGet(_list, path, nullptr, 0), 1);
}

TEST_F(Documents, FailuresAndShares)
{
    const Text refused = Make(L"refused.tif", "not a TIFF file"), none = _folder / L"none.htm";
    const Outputs outputs;
    for (const Text& path : {refused, none, _folder.path(), Text()})
        EXPECT_EQ(UtilDocInfoGet(_list, path, &outputs.info, 0), 0);
    EXPECT_EQ(UtilDocInfoGet(_list, nullptr, &outputs.info, 0), 0);
    EXPECT_EQ(UtilDocInfoGet(nullptr, none, &outputs.info, 0), 0);
    EXPECT_EQ(outputs.All(), kUnchanged);
    UtilDocInfoClose(nullptr);
#if !defined(_WIN32) // windows has no pipes in the file system
    ASSERT_EQ(mkfifo((_folder / L"pipe.htm").Narrow().c_str(), 0600), 0);
    EXPECT_EQ(UtilDocInfoGet(_list, _folder / L"pipe.htm", nullptr, 0), 0);
#endif

    EXPECT_EQ(UtilDocInfoShareAccessibility(nullptr), -1);
    EXPECT_EQ(UtilDocInfoShareAccessibility(_folder.path()), -1);
    EXPECT_EQ(UtilDocInfoShareAccessibility(L"\\\\qxut-no-such-server\\share\\a"), 0);
}

TEST_F(Documents, Explanations)
{
    QXWCHAR* reader = nullptr;
    QXWCHAR* remark = SysAllocString(L"old");
    const Text refused = Make(L"refused.tif", "IIxx...."), plain = Make(L"plain.txt", "plain text");
    EXPECT_EQ(QxDocInfoExplain(_list, refused, 0, &reader, &remark), 0);
    EXPECT_STREQ(reader, L"TIFF");
    EXPECT_STREQ(remark, L"Not a TIFF file, bad version number 30840 (0x7878)");
    EXPECT_EQ(QxDocInfoExplain(_list, plain, 0, &reader, &remark), 1);
    EXPECT_STREQ(reader, L"");
    EXPECT_STREQ(remark, L"");
    EXPECT_EQ(QxDocInfoExplain(_list, plain, 0, nullptr, nullptr), 1);
    EXPECT_EQ(QxDocInfoExplain(nullptr, plain, 0, &reader, &remark), 0);
    SysFreeString(reader);
    SysFreeString(remark);
}

#if !defined(_WIN32) // the emulator's compound files don't survive damage

namespace
{

namespace fs = std::filesystem;

std::string BytesOf(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::ptrdiff_t CountOf(const fs::path& folder)
{
    return std::distance(fs::directory_iterator(folder), {});
}

} // namespace

TEST_F(Documents, DamagedOnASmallStack)
{
    const auto descriptors = CountOf("/proc/self/fd");
    int kinds = 0;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(QXUT_TEST_DOCUMENTS))
    {
        if (!entry.is_regular_file())
            continue;
        ++kinds;
        const std::u16string extension = entry.path().extension().u16string();
        const Text name = _folder / reinterpret_cast<const wchar_t*>((u"damaged" + extension).c_str());
        const fs::path path = name.Narrow();
        RunOnStack(256,
            [&]
            {
                const auto list = UtilDocInfoOpen(0);
                DamageSome(BytesOf(entry.path()), 100,
                    [&](const std::string& bytes)
                    {
                        fs::remove(path); // overwriting would flush the file on some file systems, which is slow
                        std::ofstream(path, std::ios::binary) << bytes;
                        const std::int32_t result = UtilDocInfoGet(list, name, nullptr, 0);
                        EXPECT_TRUE(result == 0 || result == 1) << result;
                        EXPECT_EQ(BytesOf(path), bytes);
                    });
                UtilDocInfoClose(list);
            });
        fs::remove(path);
    }
    EXPECT_GT(kinds, 50);
    EXPECT_EQ(CountOf(_folder.path().Narrow()), 0);
    EXPECT_EQ(CountOf("/proc/self/fd"), descriptors);
}

#endif
