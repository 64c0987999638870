#include "accounts/path_forms.h"

#include "accounts/connection_list.h"
#include "core/forever.h"
#include "core/pattern/regex.h"
#include "files/paths.h"

#include <windows.h>
#include <winnetwk.h>

#include <cstddef>
#include <vector>

namespace qx
{
namespace
{

constexpr DWORD kUniversalNameSize = 1024;

// Returns the system's error code.
DWORD AskUniversalName(const String& path, String& name)
{
    DWORD size = kUniversalNameSize;
    std::vector<std::max_align_t> block(size / sizeof(std::max_align_t));
    const auto ask = [&]
    {
        return WNetGetUniversalNameW(path, UNIVERSAL_NAME_INFO_LEVEL, block.data(), &size);
    };
    DWORD result = ask();
    if (result == ERROR_MORE_DATA)
    {
        block.resize(size / sizeof(std::max_align_t) + 1);
        result = ask();
    }
    if (result == ERROR_SUCCESS)
        name = reinterpret_cast<const UNIVERSAL_NAME_INFOW*>(block.data())->lpUniversalName;
    return result;
}

} // namespace

bool EnsureLocalPath(const String& path, String& result)
{
    static clsRegEx& pattern = MakeForever<clsRegEx>(L"^(\\\\\\\\(?:.*?)\\\\(?:.*?))(\\\\.*|)$", 0U);
    String local = NormalizePath(path);
    clsRegExMatchList groups;
    // A pattern serialises its callers, and most paths aren't on a share.
    if (local.View().starts_with(L"\\\\") && pattern.Match(local, &groups))
    {
        ConnectionList connections;
        if (!connections.IsOpen())
            return false;
        const IString share = groups[1].text;
        RememberedConnection found;
        if (connections.Find([&share](const RememberedConnection& one) { return one.share == share; }, found))
            local = String(found.drive, groups[2].text);
    }
    result = local;
    return true;
}

bool EnsureUNCPath(const String& path, String& result)
{
    static clsRegEx& pattern = MakeForever<clsRegEx>(L"(?i)^([A-Z]:)(.*)$", 0U);
    String name = NormalizePath(path);
    if (name.CharAt(1) == L':' && pattern.Match(name, nullptr) && AskUniversalName(String(name), name) != ERROR_SUCCESS)
        return false;
    result = name;
    return true;
}

} // namespace qx
