#include "accounts/path_forms.h"

#include "accounts/connection_list.h"
#include "core/forever.h"
#include "core/pattern/regex.h"
#include "files/paths.h"

#include <windows.h>
#include <winnetwk.h>

#include <cstddef>
#include <string_view>
#include <vector>

namespace qx
{
namespace
{

constexpr DWORD kUniversalNameSize = 1024;

// Returns true for a path of one line that begins with a drive letter. Doesn't use a pattern, because a pattern
// serialises its callers.
bool IsOnDrive(std::wstring_view path)
{
    const wchar_t letter = path.empty() ? L'\0' : static_cast<wchar_t>(path[0] | 0x20);
    const std::size_t lineEnd = path.find(L'\n');
    return letter >= L'a' && letter <= L'z' && path.size() > 1 && path[1] == L':' &&
           (lineEnd == path.npos || lineEnd + 1 == path.size());
}

// Queries the name of a path on its share. Returns the system's error code.
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
    // Checks the prefix first, because a pattern serialises its callers and most paths aren't on a share.
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
    String name = NormalizePath(path);
    if (IsOnDrive(name.View()) && AskUniversalName(String(name), name) != ERROR_SUCCESS)
        return false;
    result = name;
    return true;
}

} // namespace qx
