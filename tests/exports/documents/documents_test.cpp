// Document information as a caller gets it.
#include <qxut23/bstr.h>
#include <qxut23/docinfo.h>
#include <qxut23/docinfo_explain.h>

#include "support/readable_text.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <oleauto.h>

#if !defined(_WIN32) // pipes
#include <sys/stat.h>
#endif

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

using qxtest::ReadableText;

namespace
{

using WidePath = std::vector<wchar_t>; // with its terminator

class Documents : public testing::Test
{
protected:
    Documents() { std::filesystem::create_directories(_folder); }
    ~Documents() override { std::filesystem::remove_all(_folder); }

    WidePath Make(const char* name, std::string_view bytes) const
    {
        const std::filesystem::path path = _folder / name;
        std::ofstream(path, std::ios::binary) << bytes;
        return Wide(path);
    }

    static WidePath Wide(const std::filesystem::path& path)
    {
        const std::string narrow = path.string();
        WidePath wide(narrow.begin(), narrow.end()); // ASCII characters only
        wide.push_back(0);
        return wide;
    }

    const std::filesystem::path _folder = std::filesystem::temp_directory_path() / "qxut-documents-test";
};

// The nine outputs of a request, each with a value that must be cleared.
class Outputs
{
public:
    explicit Outputs(std::uint32_t size = sizeof(QxUtDocumentInfo)) : _info{}
    {
        _info.size = size;
        VARIANT** const targets[] = {&_info.created, &_info.lastSaved, &_info.title, &_info.subject, &_info.author,
            &_info.lastAuthor, &_info.keywords, &_info.comments, &_info.resolvedPath};
        for (std::size_t i = 0; i < values.size(); ++i)
        {
            values[i].vt = VT_BSTR;
            values[i].bstrVal = SysAllocString(L"old");
            *targets[i] = &values[i];
        }
    }
    Outputs(const Outputs&) = delete;
    Outputs& operator=(const Outputs&) = delete;
    ~Outputs()
    {
        for (VARIANT& value : values)
            VariantClear(&value);
    }

    const QxUtDocumentInfo* Info() const { return &_info; }
    std::string Text(std::size_t index) const
    {
        const VARIANT& value = values[index];
        return value.vt == VT_BSTR ? ReadableText(value.bstrVal) : value.vt == VT_EMPTY ? "-" : "another type";
    }

    std::array<VARIANT, 9> values{};

private:
    QxUtDocumentInfo _info;
};

constexpr std::size_t kCreated = 0, kLastSaved = 1, kTitle = 2, kSubject = 3, kAuthor = 4, kComments = 7, kPath = 8;

constexpr char kPage[] = "<head><title>t</title><o:DocumentProperties><o:Author>a</o:Author>"
                         "<o:Created>2001-07-02T12:00:00Z</o:Created></o:DocumentProperties></head>";

} // namespace

TEST_F(Documents, AllOutputs)
{
    const WidePath path = Make("page.htm", kPage);
    const HUTDOCINFO list = UtilDocInfoOpen(0);
    Outputs outputs;
    EXPECT_EQ(UtilDocInfoGet(list, path.data(), outputs.Info(), 0), 1);
    EXPECT_EQ(outputs.Text(kTitle), "t");
    EXPECT_EQ(outputs.Text(kAuthor), "a");
    EXPECT_EQ(outputs.Text(kSubject), "-"); // also for a date that isn't set
    Outputs undated;
    EXPECT_EQ(UtilDocInfoGet(list, Make("undated.htm", "").data(), undated.Info(), 0), 1);
    EXPECT_EQ(undated.Text(kCreated), "-");
    EXPECT_EQ(outputs.Text(kComments), "-");
    EXPECT_EQ(outputs.Text(kPath), ReadableText(path.data()));
    ASSERT_EQ(outputs.values[kCreated].vt, VT_DATE);
    SYSTEMTIME local = {}, universal = {2001, 7, 0, 2, 12, 0, 0, 0}, expected = {};
    VariantTimeToSystemTime(outputs.values[kCreated].date, &local);
    SystemTimeToTzSpecificLocalTime(nullptr, &universal, &expected);
    EXPECT_EQ(local.wDay, expected.wDay);
    EXPECT_EQ(local.wHour, expected.wHour);
    EXPECT_EQ(outputs.values[kLastSaved].vt, VT_DATE); // the file's own
    UtilDocInfoClose(list);
}

TEST_F(Documents, Sizes)
{
    const WidePath path = Make("page.htm", kPage);
    const HUTDOCINFO list = UtilDocInfoOpen(0);
    const Outputs shorter(72), tooShort(64);
    EXPECT_EQ(UtilDocInfoGet(list, path.data(), shorter.Info(), 0), 1);
    EXPECT_EQ(shorter.Text(kTitle), "t");
    EXPECT_EQ(shorter.Text(kPath), "old");
    EXPECT_EQ(UtilDocInfoGet(list, path.data(), tooShort.Info(), 0), 1);
    EXPECT_EQ(tooShort.Text(kTitle), "old");
    QxUtDocumentInfo nothing = {};
    nothing.size = sizeof nothing;
    EXPECT_EQ(UtilDocInfoGet(list, path.data(), &nothing, 0), 1);
    EXPECT_EQ(UtilDocInfoGet(list, path.data(), nullptr, 0), 1);
    UtilDocInfoClose(list);
}

TEST_F(Documents, Failures)
{
    const HUTDOCINFO list = UtilDocInfoOpen(10);
    const WidePath refused = Make("refused.tif", "not a TIFF file"), none = Wide(_folder / "none.htm");
    const Outputs outputs;
    for (const WidePath& path : {refused, none, Wide(_folder), WidePath{0}})
        EXPECT_EQ(UtilDocInfoGet(list, path.data(), outputs.Info(), 0), 0);
    EXPECT_EQ(UtilDocInfoGet(nullptr, none.data(), outputs.Info(), 0), 0);
    EXPECT_EQ(UtilDocInfoGet(list, nullptr, outputs.Info(), 0), 0);
    for (std::size_t i = 0; i < outputs.values.size(); ++i)
        EXPECT_EQ(outputs.Text(i), "old");
    UtilDocInfoClose(list);
    UtilDocInfoClose(nullptr);
}

#if !defined(_WIN32) // windows has no such files

TEST_F(Documents, PipesAreNotRead)
{
    const HUTDOCINFO list = UtilDocInfoOpen(0);
    ASSERT_EQ(mkfifo((_folder / "pipe.htm").c_str(), 0600), 0);
    EXPECT_EQ(UtilDocInfoGet(list, Wide(_folder / "pipe.htm").data(), nullptr, 0), 0);
    UtilDocInfoClose(list);
}

#endif

TEST_F(Documents, Shares)
{
    EXPECT_EQ(UtilDocInfoShareAccessibility(nullptr), -1);
    EXPECT_EQ(UtilDocInfoShareAccessibility(Wide(_folder).data()), -1);
    EXPECT_EQ(UtilDocInfoShareAccessibility(L"\\\\qxut-no-such-server\\share\\a"), 0);
}

TEST_F(Documents, Explanations)
{
    const HUTDOCINFO list = UtilDocInfoOpen(10);
    QXWCHAR* reader = nullptr;
    QXWCHAR* remark = SysAllocString(L"old");
    const WidePath refused = Make("refused.tif", "IIxx...."), plain = Make("plain.txt", "plain text");
    EXPECT_EQ(QxDocInfoExplain(list, refused.data(), 0, &reader, &remark), 0);
    EXPECT_STREQ(reader, L"TIFF");
    EXPECT_STREQ(remark, L"Not a TIFF file, bad version number 30840 (0x7878)");
    EXPECT_EQ(QxDocInfoExplain(list, plain.data(), 0, &reader, &remark), 1);
    EXPECT_STREQ(reader, L"");
    EXPECT_STREQ(remark, L"");
    EXPECT_EQ(QxDocInfoExplain(list, plain.data(), 0, nullptr, nullptr), 1);
    EXPECT_EQ(QxDocInfoExplain(nullptr, plain.data(), 0, &reader, &remark), 0);
    SysFreeString(reader);
    SysFreeString(remark);
    UtilDocInfoClose(list);
}
