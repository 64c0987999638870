// Processes the most deeply nested input on threads with small stacks.
#include <qxut23/archives.h>
#include <qxut23/debug.h>
#include <qxut23/docinfo.h>
#include <qxut23/jobs.h>
#include <qxut23/markup.h>
#include <qxut23/page_text.h>
#include <qxut23/profile.h>
#include <qxut23/strings.h>

#include "core/pattern/regex.h"
#include "files/variant_file.h"
#include "support/small_stack.h"
#include "support/temp_folder.h"
#include "unit/packed/memory_file.h"

#include <windows.h>

#include <oleauto.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <string>

#include <sys/stat.h>

using namespace qxtest;

namespace
{

constexpr std::size_t kDepth = 20'000; // nested lists and elements
constexpr int kGroupDepth = 250;       // nested groups of a pattern: the limit of PCRE2
constexpr int kArrayDepth = 64;        // nested arrays of a variant

void UseProfiles(const TempFolder& folder)
{
    const HPROFJOB job = ProfJobOpenW(nullptr);
    HPROFLIST list = nullptr;
    for (std::size_t i = 0; i < kDepth; ++i)
        list = ProfAppendListW(job, list, L"l");
    ProfSetStringW(job, list, L"leaf", L"value");
    const qx::String path = folder.Path(L"deep");
    for (const std::int32_t form :
        {PROF_FORM_TEXT + 0, PROF_FORM_XML + 0, PROF_FORM_TEXT + PROF_SAVE_PACKED, PROF_FORM_XFDF + 0})
    {
        ASSERT_EQ(ProfSaveW(job, path.Text(), form), PROF_OK) << form;
        const HPROFJOB loaded = ProfJobOpenW(path.Text());
        EXPECT_EQ(ProfGetError(loaded), PROF_OK) << form;
        const HPROFJOB copy = ProfJobOpenW(nullptr);
        ProfCopyList(copy, nullptr, loaded, nullptr);
        ProfJobClose(copy);
        ProfJobClose(loaded);
    }
    ProfEmptyList(job, nullptr);
    ProfJobClose(job);
}

void UseMarkup()
{
    for (const wchar_t* const element : {L"div", L"ul", L"table", L"b", L"blockquote", L"a href=x"})
    {
        qx::String page;
        for (std::size_t i = 0; i < kDepth; ++i)
            page += qx::String(L"<") + element + L">";
        page += L"text";
        BSTR text = nullptr;
        UtilConvertHtml2PlainText(page.Text(), &text, 0);
        UtilConvertText2HTML(text, &text, 0);
        EXPECT_NE(text, nullptr);
        EXPECT_EQ(QxConvertHtml2PlainText(page.Text(), &text, QXUT_PAGE_LINKS), QXUT_PAGE_OK);
        SysFreeString(text);
    }
}

void UsePatterns()
{
    qx::String pattern, subject;
    for (int i = 0; i < kGroupDepth; ++i)
    {
        pattern += L"(a|";
        subject += L"ab";
    }
    for (int i = 0; i < kGroupDepth; ++i)
        pattern += L")*";
    qx::clsRegEx deep(pattern, 0);
    qx::clsRegExMatchList matches;
    deep.Match(subject, &matches);
    EXPECT_STREQ(deep.ErrorText().Text(), L"");
    subject.Fill(L'a', 200'000);
    EXPECT_TRUE(qx::clsRegEx(L"^(a|b)*$", 0).Match(subject, nullptr));
}

void UseVariants()
{
    qx::clsVariant value;
    for (int i = 0; i < kArrayDepth; ++i)
        value = qx::clsVariant::ArrayOf({value});
    MemoryFile file;
    EXPECT_TRUE(Save(value, file));
    MemoryFile source(file.Bytes());
    qx::clsVariant loaded;
    Load(loaded, source);
    qx::clsVariant copy = loaded;
    EXPECT_EQ(copy.Type(), VT_ARRAY | VT_VARIANT);
}

void UseTexts()
{
    wchar_t text[200];
    EXPECT_GT(UtilSafeSprintf(text, 200, L"%s %d %hs %f %n", L"a", 5, "b", 1e100, nullptr), 0);
    UtilDebug(L"line");
    const HUTTHREADPOOL pool = UtilThreadPoolOpen(1, L"pool");
    UtilThreadPoolClose(pool);
}

// Creates a thousand folders, one below the other, and a file in the deepest.
void MakeDeepTree(std::string path)
{
    constexpr std::size_t kLongestPath = 2000; // bytes
    while (path.size() < kLongestPath)
        ASSERT_EQ(mkdir((path += "/d").c_str(), 0700), 0) << path.size();
    std::ofstream(path + "/f") << "content";
}

void UseArchives(const TempFolder& folder)
{
    const qx::String tree = folder.Path(L"tree");
    ASSERT_TRUE(CreateDirectoryW(tree, nullptr));
    MakeDeepTree(tree.NarrowText());
    const qx::String path = folder.Path(L"deep.zip");
    const HZIPFILE zip = UtilZIPCreate(path.Text(), nullptr);
    EXPECT_EQ(QxZIPAppendList(zip, tree.Text(), nullptr, QXUT_ZIP_SUBFOLDERS), QXUT_ZIP_OK);
    EXPECT_EQ(UtilZIPClose(zip), QXUT_ZIP_OK);
    std::filesystem::remove_all(tree.NarrowText());
    EXPECT_EQ(QxExtractZip(path.Text(), tree.Text(), 0, nullptr, nullptr, nullptr), QXUT_EXTRACT_OK);
    std::size_t depth = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(tree.NarrowText()))
        depth += entry.is_directory() || entry.file_size() == sizeof "content" - 1;
    EXPECT_GT(depth, 900u);
}

std::string Repeated(const char* text, std::size_t count)
{
    std::string all;
    while (count-- != 0)
        all += text;
    return all;
}

// Nests dictionaries, elements, groups and comments more deeply than the readers follow.
void UseDocuments(const TempFolder& folder)
{
    const HUTDOCINFO list = UtilDocInfoOpen(0);
    const std::string pdf = "%PDF-1.4\n1 0 obj\n" + Repeated("<</A ", 200) + "\n2 0 obj\n";
    const std::pair<const wchar_t*, std::string> documents[] = {
        {L"a.pdf", pdf + "xref\n0 3\n0000000000 0 f \n0000000009 0 n \n" + std::to_string(pdf.size() - 8) +
                       " 0 n \ntrailer\n<</Info 1 0 R>>\nstartxref\n" + std::to_string(pdf.size()) + "\n%%EOF\n"},
        {L"a.xml", Repeated("<a>", 10'000)}, {L"a.rtf", "{\\info" + Repeated("{\\a ", 10'000)},
        {L"a.htm", "<head>" + Repeated("<title>", 9'000) + "</head>"},
        {L"a.eml", "From: " + Repeated("(", 30'000) + "\r\n\r\n"}};
    for (const auto& [name, bytes] : documents)
    {
        const qx::String path = folder.Path(name);
        std::ofstream(path.NarrowText(), std::ios::binary) << bytes;
        EXPECT_EQ(UtilDocInfoGet(list, path.Text(), nullptr, 0), 1) << bytes.substr(0, 20);
    }
    UtilDocInfoClose(list);
}

TEST(SmallStacks, OfTwoSizes)
{
    for (const std::size_t kilobytes : {64, 256})
    {
        const TempFolder folder;
        RunOnStack(kilobytes,
            [&]
            {
                UseProfiles(folder);
                UseMarkup();
                UseVariants();
                UseTexts();
                if (kilobytes < 256)
                    return;
                UseArchives(folder);
                UsePatterns();
                UseDocuments(folder);
            });
    }
}

// Destroying nested arrays isn't recursive. Copying is, so it is refused beyond 256 levels.
TEST(SmallStacks, ArraysOfAnyDepth)
{
    RunOnStack(64,
        []
        {
            VARIANT value = {};
            for (int depth = 1; depth <= 100'000; ++depth)
            {
                SAFEARRAY* const array = SafeArrayCreateVector(VT_VARIANT, 0, 2);
                *static_cast<VARIANT*>(array->pvData) = value;
                value.vt = VT_ARRAY | VT_VARIANT;
                value.parray = array;
                VARIANT copy = {};
                if (depth == 256 || depth == 257)
                {
                    EXPECT_EQ(VariantCopy(&copy, &value), depth == 256 ? S_OK : E_OUTOFMEMORY);
                    VariantClear(&copy);
                }
            }
            EXPECT_EQ(VariantClear(&value), S_OK);
        });
}

} // namespace
