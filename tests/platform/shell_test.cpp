// Shortcuts: the system's object, and the reader of their files.
#include "platform/system_support.h"
#include "shell/link_file.h"
#include "support/com_pointer.h"
#include "support/damage.h"
#include "support/link_builder.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <objbase.h>
#include <shlguid.h>
#include <shobjidl.h>

#include <string>

using qxplatform::LinkTarget;
using qxplatform::ParseLink;
using qxtest::kIsLayer;
using qxtest::LinkOf;
using qxtest::LinkParts;
using qxtest::Text;

namespace
{

class Shortcut : public testing::Test
{
protected:
    Shortcut()
    {
        EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
        void* object = nullptr;
        EXPECT_EQ(CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkW, &object), S_OK);
        _link.reset(static_cast<IShellLinkW*>(object));
        EXPECT_EQ(_link->QueryInterface(IID_IPersistFile, &object), S_OK);
        _file.reset(static_cast<IPersistFile*>(object));
    }
    ~Shortcut() override
    {
        _file.reset();
        _link.reset();
        CoUninitialize();
    }

    std::string Path(DWORD flags = SLGP_UNCPRIORITY, int size = MAX_PATH)
    {
        wchar_t path[MAX_PATH] = {};
        const HRESULT result = _link->GetPath(path, size, nullptr, flags);
        EXPECT_EQ(result, *path != 0 ? S_OK : S_FALSE);
        return Text(path).Narrow();
    }

    std::string LoadBytes(const std::string& bytes)
    {
        const Text path = _folder / L"a.lnk";
        qxtest::MakeFile(path, bytes);
        EXPECT_EQ(_file->Load(path, STGM_SHARE_DENY_WRITE), S_OK);
        EXPECT_EQ(_link->Resolve(nullptr, SLR_NO_UI | SLR_ANY_MATCH), S_OK);
        return Path();
    }

    qxtest::Folder _folder;
    qxtest::ComPointer<IShellLinkW> _link;
    qxtest::ComPointer<IPersistFile> _file;
};

std::optional<LinkTarget> Parse(const std::string& bytes)
{
    return ParseLink({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
}

std::string Narrow(const std::u16string& text)
{
    return std::string(text.begin(), text.end());
}

// Returns the local path and the share of the link's target with a bar between them.
std::string TargetOf(const LinkParts& parts)
{
    const std::optional<LinkTarget> target = Parse(LinkOf(parts));
    return target ? Narrow(target->local) + "|" + Narrow(target->share) : "none";
}

} // namespace

TEST_F(Shortcut, MadeByWine)
{
    const std::tuple<const char*, const char*, const char*> files[] = {
        {"local.lnk", R"(C:\reports\May 2026.pdf)", R"(C:\reports\May 2026.pdf)"},
        {"share.lnk", R"(\\server\share\folder\x.doc)", R"(\\server\share\folder\x.doc)"},
        {"root.lnk", R"(Z:\srv\reports\May.pdf)", kIsLayer ? "/srv/reports/May.pdf" : R"(Z:\srv\reports\May.pdf)"},
    };
    for (const auto& [name, stored, path] : files)
    {
        const std::string bytes = qxtest::BytesOf(Text::Widen(std::string(QXUT_TEST_DOCUMENTS "/links/") + name));
        EXPECT_EQ(LoadBytes(bytes), path);
        EXPECT_EQ(Narrow(Parse(bytes)->local), stored);
    }
}

TEST_F(Shortcut, FailuresAndFlags)
{
    EXPECT_EQ(Path(), "");
    EXPECT_EQ(_file->Load(_folder / L"none.lnk", STGM_SHARE_DENY_WRITE), HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
    qxtest::MakeFile(_folder / L"b.lnk", "no shortcut");
    EXPECT_EQ(_file->Load(_folder / L"b.lnk", STGM_SHARE_DENY_WRITE), E_FAIL);
    EXPECT_EQ(LoadBytes(LinkOf({.local = R"(Q:\a.txt)"})), R"(Q:\a.txt)");
    EXPECT_EQ(Path(SLGP_UNCPRIORITY, 4), R"(Q:\)");
#ifdef __linux__ // Wine doesn't read the share's name
    const std::string both = LinkOf({.local = R"(Q:\)", .share = R"(\\server\share)", .suffix = "a.txt"});
    EXPECT_EQ(LoadBytes(both), R"(\\server\share\a.txt)");
    EXPECT_EQ(Path(0), R"(Q:\a.txt)");
    EXPECT_EQ(LoadBytes(LinkOf({.headerFlags = 1})), "");
    const qxtest::Handle writer = qxtest::Open(_folder / L"a.lnk", GENERIC_WRITE, qxtest::kShareAll);
    EXPECT_EQ(_file->Load(_folder / L"a.lnk", STGM_SHARE_DENY_WRITE), HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION));
    EXPECT_EQ(_file->Load(_folder / L"a.lnk", STGM_SHARE_DENY_NONE), S_OK);
#endif
    void* object = nullptr;
    EXPECT_EQ(_link->QueryInterface(IID_IStorage, &object), E_NOINTERFACE);
}

TEST(Com, CreatesWhatItKnowsInAThreadThatHasEntered)
{
    void* object = nullptr;
    const auto create = [&](REFCLSID clsid)
    {
        return CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkW, &object);
    };
    EXPECT_EQ(create(CLSID_ShellLink), CO_E_NOTINITIALIZED);
    EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
    EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_FALSE);
    CoUninitialize();
    EXPECT_EQ(create(IID_IUnknown), REGDB_E_CLASSNOTREG);
    CoUninitialize();
    EXPECT_EQ(create(CLSID_ShellLink), CO_E_NOTINITIALIZED);
}

TEST(LinkFile, FormsOfTheTarget)
{
    const std::pair<LinkParts, const char*> links[] = {{{.local = R"(C:\a)", .suffix = "b"}, R"(C:\ab|)"},
        {{.share = R"(\\s\t)", .suffix = R"(a\b)"}, R"(|\\s\t\a\b)"}, {{.share = R"(\\s\t)"}, R"(|\\s\t)"},
        {{.local = R"(C:\)", .share = R"(\\s\t)", .suffix = "a"}, R"(C:\a|\\s\t\a)"},
        {{.local = "?", .suffix = "?", .wideLocal = uR"(C:\w)", .wideSuffix = u"ide"}, R"(C:\wide|)"},
        {{.local = R"(C:\a)", .wideSuffix = u"b"}, R"(C:\ab|)"},
        {{.share = "?", .suffix = "a", .wideShare = uR"(\\w\t)"}, R"(|\\w\t\a)"}, {{.suffix = "alone"}, "|"},
        {{.local = R"(C:\a)", .headerFlags = 2}, R"(C:\a|)"}, {{.local = R"(C:\a)", .headerFlags = 1}, "|"},
        {{.local = R"(C:\a)", .headerFlags = 0x103}, "|"}};
    for (const auto& [parts, target] : links)
        EXPECT_EQ(TargetOf(parts), target);
    for (const std::size_t change : {0, 4, 19})
    {
        std::string bytes = LinkOf({.local = R"(C:\a)"});
        bytes[change] ^= 1;
        EXPECT_FALSE(Parse(bytes)) << change;
    }
}

TEST(LinkFile, SurvivesDamage)
{
    const std::string whole = LinkOf({R"(C:\abc)", R"(\\s\t)", "suffix", uR"(C:\w)", uR"(\\w\t)", u"wide"});
    const auto check = [&](const std::string& bytes)
    {
        const LinkTarget target = Parse(bytes).value_or(LinkTarget());
        EXPECT_LE(target.local.size() + target.share.size(), 4 * whole.size());
    };
    qxtest::Damage(whole, 10'000, check);
}
