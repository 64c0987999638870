#include "exports/profile/support.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <tuple>
#include <utility>

using namespace profiletest;

namespace
{

// Returns the tree loaded from the bytes, or "error N" followed by the part that was loaded.
std::string Loaded(const TempFolder& folder, std::string_view bytes)
{
    const Job job(folder.Make("source", bytes));
    const std::string tree = Tree(job);
    return job.Error() == PROF_OK ? tree : "error " + std::to_string(job.Error()) + " " + tree;
}

} // namespace

TEST(ProfileOpen, ErrorsTellWhatWentWrong)
{
    const TempFolder folder;
    for (const char* name : {"missing", "no folder/missing", "refused.", "NUL"})
        EXPECT_EQ(Job(folder.Path(name)).Error(), PROF_ERR_CANNOT_READ) << name;
    EXPECT_EQ(Job("").Error(), PROF_ERR_CANNOT_READ);
    EXPECT_EQ(Job::Exclusive(folder.Path("no folder/missing")).Error(), PROF_ERR_CANNOT_WRITE);

    EXPECT_EQ(Job::Exclusive(folder.Path("new")).Error(), PROF_OK) << "it is made";
    EXPECT_EQ(Job(folder.Path("new")).Error(), PROF_OK) << "nothing is a profile";

    std::filesystem::resize_file(folder.Path("new"), std::uint64_t{1} << 31); // sparse, so it occupies no space
    const Job tooLarge(folder.Path("new"));
    EXPECT_EQ(tooLarge.Error(), PROF_ERR_LOCKED);
    EXPECT_EQ(Tree(tooLarge), "");
}

TEST(ProfileOpen, FilesOfFewBytes)
{
    const TempFolder folder;
    const std::pair<std::string, const char*> cases[] = {{"", ""}, {"[", "error -10 "}, {"[/]", "error -10 "},
        {"[/]\n", ""}, {"a=b\n", ""}, {std::string("\xFF\xFE#\0!", 5), ""}, // half a character
        {std::string(4, '\0'), ""}};
    for (const auto& [bytes, tree] : cases)
        EXPECT_EQ(Loaded(folder, bytes), tree) << testing::PrintToString(bytes);
}

TEST(ProfileRead, LinesOfTheTextFormAndOfIniFiles)
{
    const TempFolder folder;
    const std::pair<std::wstring_view, const char*> cases[] = {
        {L"[/]\na\n=1\nb=\n=\nb=c=d\n", "a=;=1;b=;=;b=c=d;"},
        {L"[/]\n\t a b =  c \t\n", "a b =  c \t;"}, // only leading white space is removed
        {L"[/]\r\r\r\n\n a=1\r b=2\n\n\n   \n\t\nc=3", "a=1;b=2;c=3;"}, {L"[/]\n#a=1\n;b=2\n{c=3\n  # d\n", ""},
        {L"[/]\n[l]\na=1\n} is the end\nb=2\n}\nc=3\n", "[l]{a=1;}b=2;"}, // nothing is read after the root's end
        {L"[/]\n[l]\n[m]\na=1\n", "[l]{[m]{a=1;}}"},                      // missing ends are accepted
        {L"[/]\n[abc\n}\n[d]e\n}\n[f] \n}\n[\n}\n[]\n}\n[[g]]\n}\n", "[ab]{}[d]]{}[f]]{}[]{}[]{}[[g]]{}"},
        {L"[/]\n[/]\na=1\n", "[/]{a=1;}"},
        {L"[/]\n\x2338\x301A\x301B\x2401=\x2338\x301A\x2401\x2409\x240D\x240A\x241F\x2400\x2420\n",
            "=[]\xE2\x90\x81=\xE2\x8C\xB8\xE3\x80\x9A\x01\t\r\n\x1F\xE2\x90\x80\xE2\x90\xA0;"},
        {L"[/]\n[\x2338\x2401]\n", "[\xE2\x8C\xB8\xE2\x90\x81]{}"}, // list names aren't decoded
        {L"a=1\n[/]\nb=2\n", "b=2;"},                               // everything before the root is skipped
        {L"a=1\n[/] \nb=2\n", ""}, {L"a=1\nb=2\n", ""},
        {std::wstring_view(L"[/]\na=1\0x\n=2\n\0b=3\nc=4\n", 22), "a=1;=2;c=4;"}, // a zero character ends its line
        // sections
        {L"[a]\r\nx=1\r\n[b]\r\ny=2\r\n[c]\r\nz=3\r\n", "x=1;[b]{y=2;[c]{z=3;}}"}, {L"\r\n\r\n  [a]\nx=1\n", "x=1;"},
        {L"[a] ; comment\nx = 1\n", "x = 1;"}, {L"[/] \nx=1\n", "x=1;"}, // only the exact line marks the root
        {L"[a]\n[b]\nx=1\n}\ny=2\n}\nz=3\n", "[b]{x=1;}y=2;"}, {L"[a", ""},
        {L"; comment\n[a]\nx=1\n", ""} // the first line decides
    };
    for (const auto& [text, tree] : cases)
        for (const std::string& bytes : {Utf16File(text), "\xEF\xBB\xBF" + Utf8(text)})
            EXPECT_EQ(Loaded(folder, bytes), tree) << Utf8(text);
}

TEST(ProfileRead, Encodings)
{
    const TempFolder folder;
    const std::string umlauts = "\xC3\xA4\xC3\xB6=\xC3\xBC"; // with letters of more than one byte
    const std::string padding = "\r\n# " + std::string(200, '.') + "\r\n";
    EXPECT_EQ(Loaded(folder, Utf16File(L"[/]\r\n\u00E4\u00F6=\u00FC\r\n")), umlauts + ";");
    EXPECT_EQ(Loaded(folder, "\xFE\xFF" + Utf16File(L"[/]\r\na=1\r\n").substr(2)), "a=1;") << "nothing is swapped";
    EXPECT_EQ(Loaded(folder, "[/]" + padding + umlauts), umlauts + ";") << "201 bytes and more are recognised";
    EXPECT_EQ(Loaded(folder, Utf16File(L"[/]\r\na=1\r\n").substr(2)), "a=1;") << "by its zeros";

    // 8-bit text that is not valid UTF-8 is read in the process's code page.
    const Job job;
    ProfSetStringA(job, nullptr, "a", "\xE4\xF6\xFC|");
    EXPECT_EQ(Loaded(folder, "[/]\na=\xE4\xF6\xFC|\n"), Tree(job));
}

TEST(ProfileWrite, EveryByteOfTheTextForm)
{
    const TempFolder folder;
    const Job job;
    ProfSetStringW(job, nullptr, L"Title", L"Report");
    ProfSetStringW(job, nullptr, L"Page/Size", L"(210,297)");
    ProfCreateListW(job, nullptr, L"1/2/3/4/5");
    ProfSetStringW(job, nullptr, L"1/2/3/4/a=b[c]", L"d=e[f]\r\n\x01\x1F\x2401");
    ProfSetStringW(job, nullptr, L"\x01", L"");
    const std::string path = folder.Path("written");
    EXPECT_EQ(job.Save(path), PROF_OK);
    EXPECT_EQ(BytesOf(path),
        Utf16File(L"[/]\r\n {\r\n Title=Report\r\n [Page]\r\n  {\r\n  Size=(210,297)\r\n  }\r\n"
                  L" [1]\r\n  {\r\n  [2]\r\n   {\r\n   [3]\r\n\t{\r\n\t[4]\r\n\t {\r\n\t [5]\r\n\t  {\r\n\t  }\r\n"
                  L"\t a\x2338"
                  L"b\x301A"
                  L"c\x301B=d=e[f]\x240D\x240A\x2401\x241F\x2401\r\n"
                  L"\t }\r\n\t}\r\n   }\r\n  }\r\n \x2401=\r\n }\r\n"));
    EXPECT_EQ(Tree(Job(path)), "Title=Report;[Page]{Size=(210,297);}[1]{[2]{[3]{[4]{[5]{}"
                               "a=b[c]=d=e[f]\r\n\x01\x1F\x01;}}}}\xE2\x90\x81=;")
        << "a control picture comes back as the control character, and that of a name as its picture";
}

TEST(ProfileWrite, TargetsOfASave)
{
    const TempFolder folder;
    const std::string path = folder.Make("File", "[/]\r\nvalue=a long one that is cut\r\n");
    const Job held = Job::Exclusive(path);
    ASSERT_EQ(held.Error(), PROF_OK);
    ProfSetStringW(held, nullptr, L"value", L"1");
    EXPECT_EQ(ProfSaveW(held, nullptr, PROF_FORM_TEXT), PROF_OK) << "the held file, in place";
    EXPECT_EQ(BytesOf(path), Utf16File(L"[/]\r\n {\r\n value=1\r\n }\r\n"));
    ProfSetStringW(held, nullptr, L"value", L"2");
    EXPECT_EQ(held.Save(folder.Path("fILE")), PROF_OK) << "the held file by its name without case";
    EXPECT_EQ(Tree(Job(path)), "value=2;");

    const Job failed(folder.Path("missing"));
    ProfSetStringW(failed, nullptr, L"a", L"1");
    EXPECT_EQ(ProfSaveW(failed, nullptr, PROF_FORM_TEXT), PROF_OK) << "a failed open leaves a job like others";
    EXPECT_EQ(failed.Error(), PROF_ERR_CANNOT_READ) << "saving doesn't touch it";
    EXPECT_EQ(Tree(Job(folder.Path("missing"))), "a=1;");
    EXPECT_EQ(failed.Save(folder.Path("refused.")), PROF_ERR_CANNOT_WRITE);
    EXPECT_EQ(ProfSaveA(failed, folder.Path("narrow").c_str(), PROF_FORM_TEXT), PROF_OK);
    EXPECT_EQ(Tree(Job(folder.Path("narrow"))), "a=1;");
}

// Lists nested so deeply that recursion would overflow the stack and full indentation would fill the disk.
TEST(ProfileLarge, DeepNesting)
{
    constexpr int kDepth = 100000;
    const TempFolder folder;
    std::string text = "[/]\n";
    for (int i = 0; i < kDepth; ++i)
        text += "[l]\n";
    const Job job(folder.Make("deep", text + "leaf=1\n"));
    ASSERT_EQ(job.Error(), PROF_OK);

    const Job copy;
    ASSERT_EQ(ProfCopyList(copy, nullptr, job, nullptr), PROF_OK);
    ASSERT_EQ(copy.Save(folder.Path("saved")), PROF_OK);
    const Job again(folder.Path("saved"));
    Wide path("");
    path.Reserve(3 * kDepth);
    for (int i = 0; i < kDepth; ++i)
        path += L"l/";
    path += L"leaf";
    EXPECT_EQ(Value(again, path), "1");
    ProfDeleteItemW(again, nullptr, path);
    EXPECT_EQ(Value(again, path), "(none)");
    ProfDebugList(again, nullptr);
    ProfDeleteListW(again, nullptr, L"l");
    EXPECT_EQ(Tree(again), "");
}

// ---- Files of other programs

TEST(ProfileSettings, LoadByTheIniRulesAndSurviveASave)
{
    constexpr std::tuple<const char*, const wchar_t*, const char*> kCases[] = {
        {"python3.11.desktop", L"NoDisplay", "true"},
        {"org.xfce.mousepad.desktop", L"Name[ar]", "\xD9\x85\xD8\xA7\xD9\x88\xD8\xB3 \xD8\xA8\xD8\xA7\xD8\xAF"},
        {"org.xfce.mousepad.desktop", L"Desktop Action preferences/Exec", "mousepad --preferences"},
        {"adwaita-index.theme", L"ZipOverlay", "zip_overlay"},
        {"php.ini-production", L"CLI Server/cli_server.color ", " On"}, // blanks around the equals sign are preserved
        {"php.ini-production",
            L"CLI Server/Date/filter/iconv/imap/intl/sqlite3/Pcre/Pdo/Pdo_mysql/pdo_mysql.default_socket", ""},
        {"smb.conf", L"global", "(none)"}}; // the first line, a comment, decides
    for (const auto& [name, path, value] : kCases)
    {
        const Job job(std::string(QXUT_TEST_DATA "/settings/") + name);
        ASSERT_EQ(job.Error(), PROF_OK);
        EXPECT_EQ(Value(job, path), value) << name;
        const TempFolder folder;
        ASSERT_EQ(job.Save(folder.Path("saved")), PROF_OK);
        EXPECT_EQ(Tree(Job(folder.Path("saved"))), Tree(job));
    }
}

TEST(ProfileFormData, ValuesThatAPdfToolExported)
{
    const Job job(std::string(QXUT_TEST_DATA) + "/forms/customer.xfdf");
    EXPECT_EQ(job.Error(), PROF_OK);
    EXPECT_EQ(Tree(job), "customer.name=J\xC3\xBCrgen <&> \"O'Neil\" \xE6\x97\xA5\xE6\x9C\xAC;"
                         "customer.address=  Line 1\r\nLine \t2;note=;agreed=Yes;");
}
